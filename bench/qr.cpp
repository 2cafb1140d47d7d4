// How long it takes to look for a QR code in a frame of a camera; see --help.

#include "bench/Report.h"
#include "bench/Statistics.h"
#include "bench/Stopwatch.h"
#include "camera/QRDetector.h"
#include "platform/QRCode.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QImage>
#include <QPainter>

#include <cstdio>
#include <exception>
#include <random>
#include <stdexcept>

namespace {

constexpr const char* description
    = "Measures how long the scanner's detector takes for a frame of 1280 x 720: one with a\n"
      "phone's pairing code, some degrees tilted and a little blurred; one like a photograph,\n"
      "with edges and noise but no code; a blank one. Figures are medians. Run it while nothing\n"
      "else runs.";

constexpr QSize frameSize(1280, 720);
// A scan every 200 ms must leave the processor to the preview and to transfers.
constexpr bench::Target target{bench::Target::Bound::atMost, 25};
constexpr double millisecondsPerSecond = 1000;

struct Options {
    int runs;
    bool json;
};

QImage blankFrame()
{
    QImage frame(frameSize, QImage::Format_Grayscale8);
    frame.fill(QColor(225, 225, 225));
    return frame;
}

void drawCode(QPainter& painter, const platform::QRCode& code, double side)
{
    const double module = side / code.width();
    for (int row = 0; row < code.width(); ++row) {
        for (int column = 0; column < code.width(); ++column) {
            if (!code.isDark(row, column)) continue;
            painter.fillRect(QRectF(column * module, row * module, module, module), Qt::black);
        }
    }
}

/// Loses a third of its detail, as by a lens that is not quite in focus.
QImage blurred(const QImage& frame)
{
    return frame.scaled(frame.size() * 2 / 3, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
        .scaled(frame.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
        .convertToFormat(QImage::Format_Grayscale8);
}

QImage frameWithCode(const QString& text)
{
    constexpr double side = 360;
    const auto code = platform::QRCode::ofText(text);
    if (!code) throw std::runtime_error("no QR code for the text");
    QImage frame = blankFrame();
    QPainter painter(&frame);
    painter.translate(frame.width() / 2.0, frame.height() / 2.0);
    painter.rotate(9);
    painter.translate(-side / 2, -side / 2);
    drawCode(painter, *code, side);
    painter.end();
    return blurred(frame);
}

/// Overlapping areas of all shades, with the noise of a sensor over them. Always the same.
QImage photographLikeFrame()
{
    constexpr int areas = 400;
    std::mt19937 random(1);
    const auto upTo
        = [&random](int limit) { return std::uniform_int_distribution<int>(0, limit)(random); };
    QImage frame = blankFrame();
    QPainter painter(&frame);
    for (int i = 0; i < areas; ++i) {
        const int shade = upTo(255);
        painter.setBrush(QColor(shade, shade, shade));
        painter.drawEllipse(
            QPoint(upTo(frame.width()), upTo(frame.height())), 4 + upTo(90), 4 + upTo(90));
    }
    painter.end();
    for (int y = 0; y < frame.height(); ++y) {
        uchar* const line = frame.scanLine(y);
        for (int x = 0; x < frame.width(); ++x) {
            line[x] = static_cast<uchar>(qBound(0, line[x] + upTo(24) - 12, 255));
        }
    }
    return frame;
}

double medianMilliseconds(const QImage& frame, const std::optional<QString>& expectedText, int runs)
{
    const ferrylane::LuminanceView view{
        frame.constBits(), frame.width(), frame.height(), static_cast<int>(frame.bytesPerLine())};
    // The first one also warms up.
    if (ferrylane::detectQRCode(view) != expectedText) {
        throw std::runtime_error("the detector does not see what is in the frame");
    }
    std::vector<double> values;
    for (int run = 0; run < runs; ++run) {
        const bench::Stopwatch stopwatch;
        static_cast<void>(ferrylane::detectQRCode(view));
        values.push_back(stopwatch.seconds() * millisecondsPerSecond);
    }
    return bench::median(values);
}

bench::Report measure(int runs)
{
    const QString link = QStringLiteral("http://192.168.1.77:8787/?flkey=")
        + QString(43, QLatin1Char('K')) + QStringLiteral("&name=Pixel%208");
    bench::Report report(QStringLiteral("Looking for a QR code, %1 runs").arg(runs));
    report.beginSection(QStringLiteral("A frame of 1280 x 720"));
    const auto add = [&](const QString& key, const QString& label, const QImage& frame,
                         const std::optional<QString>& text) {
        report.add(
            {key, label, medianMilliseconds(frame, text, runs), QStringLiteral("ms"), 2, target});
    };
    add(QStringLiteral("with_code_ms"), QStringLiteral("with a code"), frameWithCode(link), link);
    add(QStringLiteral("photograph_ms"), QStringLiteral("like a photograph, without a code"),
        photographLikeFrame(), std::nullopt);
    add(QStringLiteral("blank_ms"), QStringLiteral("blank"), blankFrame(), std::nullopt);
    return report;
}

Options readOptions(const QCoreApplication& application)
{
    const QCommandLineOption runs(QStringLiteral("runs"),
        QStringLiteral("Number of timed looks at each frame (default 101)."), QStringLiteral("N"),
        QStringLiteral("101"));
    const QCommandLineOption json(
        QStringLiteral("json"), QStringLiteral("Print one line of JSON in place of the table."));
    QCommandLineParser parser;
    parser.setApplicationDescription(QString::fromLatin1(description));
    parser.addHelpOption();
    parser.addOptions({runs, json});
    parser.process(application);
    const Options options{parser.value(runs).toInt(), parser.isSet(json)};
    if (options.runs < 1) throw std::runtime_error("--runs takes a number of at least 1");
    return options;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    try {
        const Options options = readOptions(application);
        const bench::Report report = measure(options.runs);
        const QByteArray text = options.json ? report.json() : report.table().toUtf8();
        std::fputs(text.constData(), stdout);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_qr: %s\n", error.what());
        return 1;
    }
}
