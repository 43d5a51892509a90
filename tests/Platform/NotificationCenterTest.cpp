#include "Platform/NotificationCenter.h"

#include <gtest/gtest.h>

#include <string>

using namespace orvanta;

TEST(NotificationCenterTest, HandlersMayAddAndRemoveObserversWhileOneIsPosted) {
    NotificationCenter center;
    std::string log;
    NotificationCenter::Token second{};
    center.addObserver(Notification::WillSleep, [&] {
        log += 'a';
        center.removeObserver(second);
        center.addObserver(Notification::WillSleep, [&] { log += 'n'; });
    });
    second = center.addObserver(Notification::WillSleep, [&] { log += 'b'; });
    NotificationCenter::Token third{};
    third = center.addObserver(Notification::WillSleep, [&] {
        log += 'c';
        center.removeObserver(third);
    });
    center.addObserver(Notification::DidWake, [&] { log += 'w'; });

    center.post(Notification::WillSleep);
    EXPECT_EQ(log, "ac"); // "b" was removed before its turn, "n" came too late.
    center.post(Notification::WillSleep);
    EXPECT_EQ(log, "acan");
    center.post(Notification::DidWake);
    EXPECT_EQ(log, "acanw");
}
