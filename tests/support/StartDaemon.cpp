#include "support/StartDaemon.h"

#include "support/TestFiles.h"
#include "support/Waiting.h"

#include <QFile>

#include <stdexcept>

namespace support {

namespace {

QStringList filesOf(const Command& command)
{
    QStringList files{command.outputFile, command.errorFile};
    files.removeAll(QString());
    return files;
}

QByteArray written(const QStringList& files)
{
    QByteArray all;
    for (const QString& file : files) {
        all += contentOf(file);
    }
    return all;
}

} // namespace

void startDaemon(ChildProcess& process, const Command& command, const QByteArray& ready)
{
    const QStringList files = filesOf(command);
    for (const QString& file : files) {
        QFile::remove(file); // of the one before
    }
    process.start(command);
    const bool isThere
        = waitUntil([&] { return !process.isRunning() || written(files).contains(ready); });
    if (isThere && process.isRunning()) return;
    throw std::runtime_error("not started: " + written(files).toStdString());
}

} // namespace support
