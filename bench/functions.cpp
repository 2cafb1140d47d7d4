// What single functions cost: the cryptography that bounds a transfer, and the search for a code in
// a frame of the camera, which must leave the processor to the preview and to transfers: at most
// 25 ms. Run it with --benchmark_filter=... for some of them.

#include "camera/QRDetector.h"
#include "platform/Crypto.h"
#include "platform/QRCode.h"

#include <QImage>
#include <QPainter>

#include <benchmark/benchmark.h>

#include <random>
#include <stdexcept>

namespace {

constexpr std::size_t pieceBytes = 1048576;

/// A piece of a file, and the means to seal it.
struct Piece {
    std::vector<std::byte> plain = std::vector<std::byte>(pieceBytes, std::byte{0x5a});
    std::vector<std::byte> sealed = std::vector<std::byte>(pieceBytes + platform::gcmTagBytes);
    platform::GcmNonce nonce{};
    platform::Aes256Gcm cipher{
        *platform::SecretKey::fromBytes(std::vector<std::byte>(32, std::byte{7}))};
    platform::Sha256 sha256;

    void seal() { cipher.seal(nonce, {}, plain, sealed); }
    void open()
    {
        if (!cipher.open(nonce, {}, sealed, plain)) throw std::runtime_error("it does not open");
    }
    void hash() { sha256.update(plain); }
};

template <typename Work> void measurePieces(benchmark::State& state, const Work& work)
{
    Piece piece;
    piece.seal();
    for ([[maybe_unused]] auto _ : state) {
        work(piece);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(pieceBytes));
}

constexpr QSize frameSize(1280, 720);

QImage blankFrame()
{
    QImage frame(frameSize, QImage::Format_Grayscale8);
    frame.fill(QColor(225, 225, 225));
    return frame;
}

/// Loses a third of its detail, as by a lens that is not quite in focus.
QImage blurred(const QImage& frame)
{
    return frame.scaled(frame.size() * 2 / 3, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
        .scaled(frame.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
        .convertToFormat(QImage::Format_Grayscale8);
}

/// A phone's pairing code, some degrees tilted and a little blurred.
QImage frameWithCode(const QString& text)
{
    constexpr double side = 360;
    const auto code = platform::QRCode::ofText(text).value();
    const double module = side / code.width();
    QImage frame = blankFrame();
    QPainter painter(&frame);
    painter.translate(frame.width() / 2.0, frame.height() / 2.0);
    painter.rotate(9);
    painter.translate(-side / 2, -side / 2);
    for (int row = 0; row < code.width(); ++row) {
        for (int column = 0; column < code.width(); ++column) {
            if (!code.isDark(row, column)) continue;
            painter.fillRect(QRectF(column * module, row * module, module, module), Qt::black);
        }
    }
    painter.end();
    return blurred(frame);
}

/// Overlapping areas of all shades, with the noise of a sensor over them. Always the same.
QImage photographLikeFrame()
{
    std::mt19937 random(1);
    const auto upTo
        = [&random](int limit) { return std::uniform_int_distribution<int>(0, limit)(random); };
    QImage frame = blankFrame();
    QPainter painter(&frame);
    for (int i = 0; i < 400; ++i) {
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

void detect(benchmark::State& state, const QImage& frame, const std::optional<QString>& expected)
{
    for ([[maybe_unused]] auto _ : state) {
        if (ferrylane::detectQRCode(frame) != expected) state.SkipWithError("not what is there");
    }
}

QString pairingLink()
{
    return QStringLiteral("http://192.168.1.77:8787/?flkey=") + QString(43, QLatin1Char('K'))
        + QStringLiteral("&name=Pixel%208");
}

void addBenchmarks()
{
    const auto add = [](const char* name, auto work) {
        benchmark::RegisterBenchmark(
            name, [work](benchmark::State& state) { measurePieces(state, work); });
    };
    add("seal", [](Piece& piece) { piece.seal(); });
    add("open", [](Piece& piece) { piece.open(); });
    add("hash", [](Piece& piece) { piece.hash(); });
    // The serial limits of a sender and of a receiver.
    add("sealAndHash", [](Piece& piece) { piece.seal(), piece.hash(); });
    add("openAndHash", [](Piece& piece) { piece.open(), piece.hash(); });

    const auto addFrame
        = [](const char* name, const QImage& frame, const std::optional<QString>& text) {
              benchmark::RegisterBenchmark(name, [frame, text](benchmark::State& state) {
                  detect(state, frame, text);
              })->Unit(benchmark::kMillisecond);
          };
    addFrame("frameWithACode", frameWithCode(pairingLink()), pairingLink());
    addFrame("frameLikeAPhotograph", photographLikeFrame(), std::nullopt);
    addFrame("frameThatIsBlank", blankFrame(), std::nullopt);
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    addBenchmarks();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
