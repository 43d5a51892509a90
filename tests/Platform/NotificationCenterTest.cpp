#include "Platform/NotificationCenter.h"

#include <gtest/gtest.h>

#include <string>

using namespace orvanta;

TEST(NotificationCenterTest, HandlersMayAddAndRemoveObserversWhileOneIsPosted) {
    NotificationCenter center;
    std::string log;
    const auto logAs = [&log](char name) {
        return [&log, name] {
            log += name;
        };
    };
    NotificationCenter::Token first{};
    NotificationCenter::Token second{};
    first = center.addObserver(Notification::WillSleep, [&] {
        log += 'a';
        center.removeObserver(first);
        center.removeObserver(second);
        center.addObserver(Notification::WillSleep, logAs('n'));
    });
    second = center.addObserver(Notification::WillSleep, logAs('b'));
    center.addObserver(Notification::WillSleep, logAs('c'));
    center.addObserver(Notification::DidWake, logAs('w'));
    for (const auto posted :
         {Notification::WillSleep, Notification::WillSleep, Notification::DidWake}) {
        center.post(posted);
        log += ' ';
    }
    // "b" was removed before its turn, "n" came too late for the first time.
    EXPECT_EQ(log, "ac cn w ");
}
