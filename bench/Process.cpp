#include "bench/Process.h"

#include <QByteArray>
#include <QFile>

#include <stdexcept>

#include <sys/resource.h>
#include <unistd.h>

namespace bench {

namespace {

QString pathOf(qint64 process, const char* file)
{
    return QStringLiteral("/proc/%1/").arg(process) + QLatin1StringView(file);
}

QByteArray contentOf(qint64 process, const char* fileName)
{
    QFile file(pathOf(process, fileName));
    if (!file.open(QIODevice::ReadOnly)) throw std::runtime_error("the measured process has ended");
    return file.readAll();
}

double secondsOf(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

} // namespace

Process::ProcessorTime Process::processorTime() const
{
    const QByteArray stat = contentOf(id_, "stat");
    // The second field, the name in brackets, may hold blanks. utime and stime are fields 14
    // and 15.
    const auto fields = stat.sliced(stat.lastIndexOf(')') + 2).split(' ');
    const auto ticksPerSecond = static_cast<double>(sysconf(_SC_CLK_TCK));
    return {fields[11].toDouble() / ticksPerSecond, fields[12].toDouble() / ticksPerSecond};
}

Process::ProcessorTime Process::ownProcessorTime()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return {secondsOf(usage.ru_utime), secondsOf(usage.ru_stime)};
}

void Process::resetPeakMemory() const
{
    QFile file(pathOf(id_, "clear_refs"));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || file.write("5") != 1) {
        throw std::runtime_error("cannot reset the peak memory of the measured process");
    }
}

int Process::threads() const
{
    return static_cast<int>(status("Threads"));
}

qint64 Process::status(const char* name) const
{
    const QByteArray key = QByteArray(name) + ':';
    for (const QByteArray& line : contentOf(id_, "status").split('\n')) {
        if (line.startsWith(key)) {
            return line.sliced(key.size()).simplified().split(' ').first().toLongLong();
        }
    }
    throw std::runtime_error("the measured process has ended");
}

double Process::mebibytes(const char* name) const
{
    return static_cast<double>(status(name)) / 1024; // given in KiB
}

} // namespace bench
