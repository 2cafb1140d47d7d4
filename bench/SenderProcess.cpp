#include "bench/SenderProcess.h"

#include "bench/Interruption.h"

#include <QCoreApplication>
#include <QFile>

#include <stdexcept>

namespace bench {

SenderProcess::SenderProcess(const QString& phone)
{
    process_.setProgram(QCoreApplication::applicationFilePath());
    process_.setArguments({QStringLiteral("--") + QString::fromLatin1(senderRoleOption), phone});
    process_.setProcessEnvironment(home_.environment());
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process_.start();
    if (!process_.waitForStarted()) throw std::runtime_error("cannot start the sender");
}

SenderProcess::~SenderProcess()
{
    // The end of its input is the end of its work.
    process_.closeWriteChannel();
    if (!process_.waitForFinished()) process_.kill();
}

SendCost SenderProcess::send(const QString& path)
{
    process_.write(QFile::encodeName(path) + '\n');
    while (!process_.canReadLine()) {
        if (!process_.waitForReadyRead(-1)) {
            throwIfInterrupted();
            throw std::runtime_error("the sender has ended");
        }
    }
    throwIfInterrupted();
    const auto cost = SendCost::fromLine(process_.readLine());
    if (!cost) throw std::runtime_error("the sender does not tell what a send cost");
    return *cost;
}

} // namespace bench
