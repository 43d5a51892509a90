#include "Linux/MainLoop/ReadableNotifier.h"

#include "Testing.h"

#include <fcntl.h>

using namespace orvanta;

namespace {

struct Pipe {
    Pipe() { EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0); }
    ~Pipe() {
        ::close(reading);
        ::close(writing);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    void write() const { EXPECT_EQ(::write(writing, "x", 1), 1); }
    void read() const {
        char byte = 0;
        EXPECT_EQ(::read(reading, &byte, 1), 1);
    }

    std::array<int, 2> ends{-1, -1};
    int& reading = ends[0];
    int& writing = ends[1];
};

TEST(ReadableNotifierTest, TellsAsLongAsThereIsSomethingAndItIsEnabled) {
    Pipe pipe;
    Pipe other;
    ReadableNotifier notifier(pipe.reading);
    const ReadableNotifier silent(other.reading);
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
    ::close(std::exchange(pipe.writing, -1));
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
        notifiers[i] = std::make_unique<ReadableNotifier>(pipes[i].reading);
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
