#pragma once

#include "platform/Bytes.h"

#include <memory>

namespace platform {

/// Bytes that are appended at one end and consumed at the other: what has been received and not yet
/// been parsed. Memory is taken only when bytes are appended, and never given back before the
/// buffer goes.
///
/// Consuming moves nothing: a view from unread() stays valid until the next prepare() or append().
///
/// More than there is room for or unread ends the program: what follows would be others' memory.
class ByteBuffer {
public:
    ByteBuffer() = default;
    ByteBuffer(ByteBuffer&& other) noexcept { swap(other); }
    ByteBuffer& operator=(ByteBuffer&& other) noexcept
    {
        swap(other);
        return *this;
    }
    ByteBuffer(const ByteBuffer&) = delete;
    ByteBuffer& operator=(const ByteBuffer&) = delete;
    ~ByteBuffer() = default;

    [[nodiscard]] ByteView unread() const { return {storage_.get() + begin_, end_ - begin_}; }
    /// The same bytes, for one who changes them where they lie.
    [[nodiscard]] MutableByteView unreadInPlace() { return {storage_.get() + begin_, size()}; }
    [[nodiscard]] std::size_t size() const { return end_ - begin_; }
    [[nodiscard]] bool empty() const { return begin_ == end_; }

    /// Room for exactly `count` more bytes behind the unread ones; follow it by commit().
    [[nodiscard]] MutableByteView prepare(std::size_t count);
    /// Makes the first `count` bytes of the room given by prepare() unread.
    void commit(std::size_t count);

    void append(ByteView bytes);
    /// Lets go of the first `count` unread bytes.
    void consume(std::size_t count);

private:
    void swap(ByteBuffer& other) noexcept;
    void moveUnreadToFront();
    void grow(std::size_t capacity);

    std::unique_ptr<std::byte[]> storage_;
    std::size_t capacity_ = 0;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
};

} // namespace platform
