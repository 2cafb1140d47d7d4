#include "platform/ByteBuffer.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace platform {

MutableByteView ByteBuffer::prepare(std::size_t count)
{
    if (capacity_ - end_ < count) {
        if (capacity_ - size() >= count) {
            moveUnreadToFront();
        } else {
            grow(std::max(size() + count, capacity_ + capacity_ / 2));
        }
    }
    return {storage_.get() + end_, count};
}

void ByteBuffer::append(ByteView bytes)
{
    copyBytes(bytes, prepare(bytes.size()));
    commit(bytes.size());
}

void ByteBuffer::commit(std::size_t count)
{
    if (count > capacity_ - end_) std::abort();
    end_ += count;
}

void ByteBuffer::consume(std::size_t count)
{
    if (count > size()) std::abort();
    begin_ += count;
    if (begin_ == end_) {
        begin_ = end_ = 0;
    }
}

void ByteBuffer::swap(ByteBuffer& other) noexcept
{
    std::swap(storage_, other.storage_);
    std::swap(capacity_, other.capacity_);
    std::swap(begin_, other.begin_);
    std::swap(end_, other.end_);
}

void ByteBuffer::moveUnreadToFront()
{
    std::memmove(storage_.get(), storage_.get() + begin_, size());
    end_ = size();
    begin_ = 0;
}

void ByteBuffer::grow(std::size_t capacity)
{
    // Value-initialising would write every byte once more for nothing.
    auto larger = std::make_unique_for_overwrite<std::byte[]>(capacity);
    copyBytes(unread(), {larger.get(), capacity});
    storage_ = std::move(larger);
    capacity_ = capacity;
    end_ = size();
    begin_ = 0;
}

} // namespace platform
