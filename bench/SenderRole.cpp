#include "bench/SenderRole.h"

#include "bench/SendCost.h"
#include "bench/Stopwatch.h"
#include "core/Base64Url.h"
#include "sender/FerrylaneV4Sender.h"
#include "support/UploadStream.h"

#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>

#include <cstdio>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>

#include <unistd.h>

namespace bench {

using ferrylane::FerrylaneV4Sender;

namespace {

platform::FilePaths filesOf(const QString& path)
{
    if (!QFileInfo(path).isDir()) return {path};
    platform::FilePaths files;
    for (const QFileInfo& file : QDir(path).entryInfoList(QDir::Files, QDir::Name)) {
        files.append(platform::FilePath(file.filePath()));
    }
    return files;
}

/// MiB of a process whose peak counts from now on.
double memoryAtStart(const Process& process)
{
    process.resetPeakMemory();
    return process.memory();
}

/// The sender with all that it needs, as the program builds it.
class MeasuredSender {
public:
    explicit MeasuredSender(const QString& baseURL)
        : target_{QStringLiteral("Benchmark phone"), baseURL,
            ferrylane::base64URLEncode(support::testKey().bytes())}
    {
    }

    [[nodiscard]] SendCost send(const platform::FilePaths& files)
    {
        const auto before = Process::ownProcessorTime();
        const Stopwatch stopwatch;
        sendAndWait(files);
        const double seconds = stopwatch.seconds();
        return {seconds, Process::ownProcessorTime() - before, idleMemory_, process_.peakMemory()};
    }

private:
    void sendAndWait(const platform::FilePaths& files)
    {
        std::optional<FerrylaneV4Sender::Result> result;
        QEventLoop loop;
        QObject::connect(&sender_, &FerrylaneV4Sender::completed, &loop, [&](const auto& how) {
            result = how;
            loop.quit();
        });
        sender_.send(files, target_);
        loop.exec();
        if (!result) throw std::runtime_error("the send has not ended");
        if (const auto* error = std::get_if<ferrylane::SendError>(&*result)) {
            throw std::runtime_error(error->what());
        }
    }

    Process process_{getpid()};
    ferrylane::FerrylanePairedTarget target_;
    FerrylaneV4Sender sender_{QStringLiteral("Benchmark")};
    double idleMemory_ = memoryAtStart(process_); // the last: all the rest is there by then
};

} // namespace

void playSender(const QString& baseURL)
{
    MeasuredSender sender(baseURL);
    for (std::string path; std::getline(std::cin, path);) {
        const QByteArray line = sender.send(filesOf(QFile::decodeName(path.c_str()))).toLine();
        std::fputs(line.constData(), stdout);
        std::fflush(stdout);
    }
}

} // namespace bench
