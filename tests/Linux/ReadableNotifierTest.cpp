#include "Linux/MainLoop/ReadableNotifier.h"

#include "Testing.h"

#include <fcntl.h>

using namespace orvanta;

namespace {

struct Pipe {
    Pipe() { EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0); }
    ~Pipe() {
        ::close(ends[0]);
        ::close(ends[1]);
    }
    void write() const { EXPECT_EQ(::write(ends[1], "x", 1), 1); }

    std::array<int, 2> ends{-1, -1};
};

TEST(ReadableNotifierTest, TellsAsLongAsThereIsSomethingAndItIsEnabled) {
    Pipe pipe;
    Pipe other;
    ReadableNotifier notifier(pipe.ends[0]);
    const ReadableNotifier silent(other.ends[0]);
    int told = 0;
    QObject::connect(&notifier, &ReadableNotifier::activated, [&] { ++told; });
    QObject::connect(&silent, &ReadableNotifier::activated, [] { ADD_FAILURE(); });
    pipe.write();
    EXPECT_TRUE(eventually([&] { return told >= 3; }));
    char byte = 0;
    EXPECT_EQ(::read(pipe.ends[0], &byte, 1), 1);
    QCoreApplication::processEvents();
    const int before = told;
    QCoreApplication::processEvents();
    EXPECT_EQ(told, before);

    // A peer's end is not to be heard of either.
    notifier.setEnabled(false);
    pipe.write();
    ::close(std::exchange(pipe.ends[1], -1));
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
        notifiers[i] = std::make_unique<ReadableNotifier>(pipes[i].ends[0]);
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
