#include "platform/linux/FileCalls.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <thread>

#include <fcntl.h>
#include <pthread.h>

namespace platform {
namespace {

void ignoreSignal(int) {}

/// SIGUSR1 interrupts system calls while this lives.
class InterruptingSignal {
public:
    InterruptingSignal()
    {
        struct sigaction action {};
        action.sa_handler = ignoreSignal;
        ::sigaction(SIGUSR1, &action, &before_);
    }
    ~InterruptingSignal() { ::sigaction(SIGUSR1, &before_, nullptr); }
    InterruptingSignal(const InterruptingSignal&) = delete;
    InterruptingSignal& operator=(const InterruptingSignal&) = delete;

private:
    struct sigaction before_ {};
};

QByteArray readSlowlyToEnd(int descriptor)
{
    QByteArray content;
    QByteArray piece(10007, '\0');
    for (;;) {
        const ssize_t count
            = ::read(descriptor, piece.data(), static_cast<std::size_t>(piece.size()));
        if (count <= 0) return content;
        content.append(piece.constData(), count);
        std::this_thread::sleep_for(std::chrono::microseconds(500));
    }
}

TEST(FileCallsTest, WriteAllCarriesOnAfterInterruptionsAndShortWrites)
{
    const InterruptingSignal signal;
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const FileDescriptor reading(ends[0]);
    FileDescriptor writing(ends[1]);
    QByteArray content;
    for (int i = 0; content.size() < 1000000; ++i) {
        content.append(QByteArray::number(i));
    }

    std::atomic<bool> done = false;
    std::error_code error;
    std::thread writer([&] {
        error = writeAll(writing.get(), bytesOf(content));
        static_cast<void>(writing.close());
        done = true;
    });
    std::thread disturber([&, thread = writer.native_handle()] {
        while (!done) {
            ::pthread_kill(thread, SIGUSR1);
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
    });
    const QByteArray received = readSlowlyToEnd(reading.get());
    disturber.join();
    writer.join();

    EXPECT_FALSE(error);
    EXPECT_TRUE(received == content);
}

} // namespace
} // namespace platform
