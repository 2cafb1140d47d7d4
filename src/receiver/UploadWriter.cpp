#include "receiver/UploadWriter.h"

#include "core/Log.h"

namespace ferrylane {

UploadWriter::UploadWriter(std::unique_ptr<PartialFile> file, platform::SerialQueue& queue)
    : queue_(queue), file_(std::move(file))
{
}

UploadWriter::~UploadWriter()
{
    (void)settle();
}

platform::MutableByteView UploadWriter::space(std::size_t length)
{
    std::unique_lock lock(mutex_);
    written_.wait(lock, [this] { return pending_ < bufferCount; });
    return buffers_[filling_].prepare(length);
}

bool UploadWriter::take(std::size_t length)
{
    const std::size_t full = filling_;
    buffers_[full].commit(length);
    filling_ = (filling_ + 1) % bufferCount;
    {
        const std::lock_guard lock(mutex_);
        if (failure_) return false;
        ++pending_;
    }
    queue_.async([this, full] { write(full); });
    return true;
}

bool UploadWriter::settle()
{
    std::unique_lock lock(mutex_);
    written_.wait(lock, [this] { return pending_ == 0; });
    return !failure_;
}

std::optional<platform::Sha256Digest> UploadWriter::digest()
{
    if (!settle()) return std::nullopt;
    return sha256_.finish();
}

std::optional<QString> UploadWriter::store(
    const QString& name, const std::optional<QString>& senderName, std::error_code& error)
{
    return file_->store(name, senderName, error);
}

void UploadWriter::write(std::size_t buffer)
{
    const platform::ByteView bytes = buffers_[buffer].unread();
    // Only this queue sets the failure, so it may be looked at without the lock here.
    std::error_code error = failure_;
    if (!error) {
        error = file_->write(bytes);
        if (error) {
            flLog(QStringLiteral("Could not write the upload: ")
                + QString::fromStdString(error.message()));
        }
        sha256_.update(bytes);
    }
    buffers_[buffer].consume(bytes.size());

    const std::lock_guard lock(mutex_);
    failure_ = error;
    --pending_;
    // Under the lock: whoever waits may destroy this as soon as it sees nothing pending.
    written_.notify_all();
}

} // namespace ferrylane
