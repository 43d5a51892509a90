#include "Linux/MainLoop/ReadableNotifier.h"

#include "Eventually.h"

#include <QCoreApplication>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <memory>
#include <utility>

using namespace orvanta;

namespace {

class Pipe {
public:
    Pipe() { EXPECT_EQ(::pipe2(ends_.data(), O_CLOEXEC), 0); }
    ~Pipe() {
        ::close(ends_[0]);
        closeWriting();
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int reading() const { return ends_[0]; }
    void write() const { EXPECT_EQ(::write(ends_[1], "x", 1), 1); }
    void read() const {
        char byte = 0;
        EXPECT_EQ(::read(ends_[0], &byte, 1), 1);
    }
    void closeWriting() {
        if (ends_[1] >= 0) {
            ::close(std::exchange(ends_[1], -1));
        }
    }

private:
    std::array<int, 2> ends_{-1, -1};
};

TEST(ReadableNotifierTest, TellsAsLongAsThereIsSomethingAndItIsEnabled) {
    Pipe pipe;
    Pipe other;
    ReadableNotifier notifier(pipe.reading());
    const ReadableNotifier silent(other.reading());
    int told = 0;
    QObject::connect(&notifier, &ReadableNotifier::activated, [&] { ++told; });
    QObject::connect(&silent, &ReadableNotifier::activated, [] { ADD_FAILURE(); });
    pipe.write();
    EXPECT_TRUE(eventually([&] { return told >= 3; }));
    pipe.read();
    QCoreApplication::processEvents();
    const int before = told;
    QCoreApplication::processEvents();
    EXPECT_EQ(told, before);

    // A peer's end is not to be heard of either.
    notifier.setEnabled(false);
    pipe.write();
    pipe.closeWriting();
    for (int i = 0; i < 3; ++i) {
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(told, before);
    notifier.setEnabled(true);
    EXPECT_TRUE(eventually([&] { return told > before; }));
}

TEST(ReadableNotifierTest, OneMayRemoveAnotherThatIsDueAndItself) {
    const std::array<Pipe, 3> pipes;
    std::array<std::unique_ptr<ReadableNotifier>, 3> notifiers;
    int told = 0;
    for (size_t i = 0; i < pipes.size(); ++i) {
        pipes[i].write();
        notifiers[i] = std::make_unique<ReadableNotifier>(pipes[i].reading());
        QObject::connect(notifiers[i].get(), &ReadableNotifier::activated, [&] {
            ++told;
            for (auto& each : notifiers) {
                each.reset();
            }
        });
    }
    EXPECT_TRUE(eventually([&] { return told > 0; }));
    QCoreApplication::processEvents();
    EXPECT_EQ(told, 1);
}

} // namespace
