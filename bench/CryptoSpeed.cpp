#include "bench/CryptoSpeed.h"

#include "bench/Statistics.h"
#include "bench/Stopwatch.h"
#include "platform/Crypto.h"
#include "support/UploadStream.h"

#include <stdexcept>

namespace bench {

namespace {

constexpr std::size_t pieceBytes = 1048576;
constexpr int pieces = 512;

/// What a work on one piece costs, from doing it with many.
template <typename Work> CryptoSpeed::Figures measure(const Work& workOnPiece)
{
    const double processorStart = threadSeconds();
    const Stopwatch stopwatch;
    for (int i = 0; i < pieces; ++i) {
        workOnPiece();
    }
    const double seconds = stopwatch.seconds();
    const double processorSeconds = threadSeconds() - processorStart;
    constexpr auto bytes = static_cast<double>(pieceBytes * pieces);
    return {bytes / bytesPerMegabyte / seconds, processorSeconds / (bytes / bytesPerGigabyte)};
}

CryptoSpeed::Figures measureOpening(const QByteArray& content)
{
    const platform::GcmNonce nonce{};
    platform::Aes256Gcm cipher(support::testKey());
    std::vector<std::byte> sealed(pieceBytes + platform::gcmTagBytes);
    cipher.seal(nonce, {}, platform::bytesOf(content), sealed);

    std::vector<std::byte> opened(pieceBytes);
    return measure([&] {
        if (!cipher.open(nonce, {}, sealed, opened)) {
            throw std::runtime_error("a piece that was sealed does not open");
        }
    });
}

CryptoSpeed::Figures measureSealing(const QByteArray& content)
{
    const platform::GcmNonce nonce{};
    platform::Aes256Gcm cipher(support::testKey());
    std::vector<std::byte> sealed(pieceBytes + platform::gcmTagBytes);
    return measure([&] { cipher.seal(nonce, {}, platform::bytesOf(content), sealed); });
}

CryptoSpeed::Figures measureHashing(const QByteArray& content)
{
    platform::Sha256 sha256;
    const auto figures = measure([&] { sha256.update(platform::bytesOf(content)); });
    static_cast<void>(sha256.finish());
    return figures;
}

} // namespace

CryptoSpeed measureCrypto(CipherUse use)
{
    const QByteArray content = support::testContent(static_cast<qsizetype>(pieceBytes));
    const auto cipher = use == CipherUse::open ? measureOpening(content) : measureSealing(content);
    return {cipher, measureHashing(content)};
}

} // namespace bench
