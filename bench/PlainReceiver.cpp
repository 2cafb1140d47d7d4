#include "bench/PlainReceiver.h"

#include "bench/RequestReader.h"
#include "bench/SealedUpload.h"
#include "protocol/V4Stream.h"

#include <QFile>

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace bench {

using platform::ByteView;

namespace {

void require(bool success, const char* what)
{
    if (!success) throw std::system_error(errno, std::system_category(), what);
}

void store(ByteView record, int file)
{
    if (platform::readU32BigEndian(record.subspan(4)) == ferrylane::finalRecordIndex) return;
    ByteView rest = record.subspan(
        ferrylane::recordHeadBytes, record.size() - ferrylane::recordOverheadBytes);
    while (!rest.empty()) {
        const ssize_t written = write(file, rest.data(), rest.size());
        require(written > 0, "cannot write an upload");
        rest = rest.subspan(static_cast<std::size_t>(written));
    }
}

void receiveUpload(int connection, const QByteArray& path)
{
    const int file = open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    require(file >= 0, "cannot open a file for an upload");
    RequestReader request(connection);
    static_cast<void>(request.requestLine());
    request.readBody([file](ByteView record) { store(record, file); });
    close(file);
    sendAnswer(connection, storedAnswer());
}

} // namespace

PlainReceiver::PlainReceiver(const QString& file)
    : server_([path = QFile::encodeName(file)](int connection) { receiveUpload(connection, path); })
{
}

} // namespace bench
