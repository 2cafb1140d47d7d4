#include "platform/ByteBuffer.h"

#include <gtest/gtest.h>

using namespace platform;

namespace {

void append(ByteBuffer& buffer, const QByteArray& bytes)
{
    buffer.append(bytesOf(bytes));
}

} // namespace

TEST(ByteBuffer, keepsTheOrderThroughGrowingAndMoving)
{
    ByteBuffer buffer;
    QByteArray expected;
    // Sizes that make the buffer grow, move its content to the front and run empty, in turn.
    for (int i = 0; i < 200; ++i) {
        const QByteArray piece(1 + (i * 37) % 61, static_cast<char>('a' + i % 26));
        append(buffer, piece);
        expected += piece;
        const qsizetype consumed = (i * 53) % (expected.size() + 1);
        buffer.consume(static_cast<std::size_t>(consumed));
        expected.remove(0, consumed);
        ASSERT_EQ(toByteArray(buffer.unread()), expected) << "step " << i;
    }
}

TEST(ByteBufferDeathTest, endsTheProgramRatherThanTouchMemoryOfOthers)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    ByteBuffer buffer;
    append(buffer, "abc");
    EXPECT_DEATH(buffer.consume(4), "");
    EXPECT_DEATH(buffer.commit(buffer.prepare(100).size() + 100), "");
}

TEST(ByteBuffer, consumingLeavesViewsAsTheyAre)
{
    ByteBuffer buffer;
    append(buffer, "chunk and more");
    const ByteView view = buffer.unread().first(5);
    buffer.consume(buffer.size());
    EXPECT_EQ(toByteArray(view), "chunk");
}

TEST(ByteBuffer, canBeUsedAfterItWasMovedFrom)
{
    ByteBuffer from;
    append(from, "abc");
    ByteBuffer to = std::move(from);
    append(to, "def");
    append(from, "x"); // NOLINT(bugprone-use-after-move): an empty buffer is left
    EXPECT_EQ(toByteArray(to.unread()), "abcdef");
    EXPECT_EQ(toByteArray(from.unread()), "x");
}
