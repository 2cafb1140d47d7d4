#include "phone/UploadProgress.h"

#include <cstdio>
#include <utility>

#include <unistd.h>

namespace ferrylane::phone {

namespace {

constexpr int barCells = 30;
constexpr int nameColumns = 28;

constexpr const char* clearLine = "\r\033[K";

} // namespace

QString speedText(double megabytesPerSecond)
{
    return QStringLiteral("%1 MB/s").arg(megabytesPerSecond, 0, 'f', 1);
}

UploadProgress::UploadProgress(QString name)
    : name_(std::move(name)), isTerminal_(isatty(STDERR_FILENO) == 1)
{
}

UploadProgress::~UploadProgress()
{
    if (isTerminal_) std::fputs(clearLine, stderr);
}

void UploadProgress::advanced(double fraction, double megabytesPerSecond) const
{
    if (!isTerminal_) return;
    const auto full = static_cast<int>(fraction * barCells);
    const QString line
        = QStringLiteral("%1 [%2] %3%  %4")
              .arg(name_.left(nameColumns), QString(full, u'#') + QString(barCells - full, u'-'),
                  QString::number(static_cast<int>(fraction * 100)), speedText(megabytesPerSecond));
    std::fprintf(stderr, "%s%s", clearLine, line.toUtf8().constData());
}

} // namespace ferrylane::phone
