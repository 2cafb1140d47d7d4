#include "phone/UploadProgress.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

#include <unistd.h>

namespace ferrylane::phone {

namespace {

constexpr auto drawingInterval = std::chrono::milliseconds(100);
constexpr int barCells = 30;
constexpr int nameColumns = 28;

constexpr const char* clearLine = "\r\033[K";

} // namespace

QString speedText(qint64 bytes, platform::Duration elapsed)
{
    const double seconds = std::max(platform::seconds(elapsed), 0.001);
    const double megabytes = static_cast<double>(bytes) / 1'000'000;
    return QStringLiteral("%1 MB/s").arg(megabytes / seconds, 0, 'f', 1);
}

QString progressLine(const QString& name, qint64 done, qint64 total, platform::Duration elapsed)
{
    const double share = total > 0 ? static_cast<double>(done) / static_cast<double>(total) : 1.0;
    const auto full = static_cast<int>(share * barCells);
    const QString bar = QString(full, u'#') + QString(barCells - full, u'-');
    return QStringLiteral("%1 [%2] %3%  %4")
        .arg(name.left(nameColumns), bar, QString::number(static_cast<int>(share * 100)),
            speedText(done, elapsed));
}

UploadProgress::UploadProgress(QString name, qint64 total, const platform::Clock& clock)
    : name_(std::move(name))
    , total_(total)
    , clock_(clock)
    , start_(clock.now())
    , nextDrawing_(start_)
    , isTerminal_(isatty(STDERR_FILENO) == 1)
{
}

UploadProgress::~UploadProgress()
{
    if (isTerminal_) std::fputs(clearLine, stderr);
}

void UploadProgress::advanced(qint64 done)
{
    const auto now = clock_.now();
    if (!isTerminal_ || now < nextDrawing_) return;
    nextDrawing_ = now + drawingInterval;
    const QByteArray line = progressLine(name_, done, total_, elapsed()).toUtf8();
    std::fprintf(stderr, "%s%s", clearLine, line.constData());
}

} // namespace ferrylane::phone
