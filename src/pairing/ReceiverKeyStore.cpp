#include "pairing/ReceiverKeyStore.h"

#include "core/Log.h"
#include "core/StoragePaths.h"
#include "platform/Crypto.h"
#include "platform/Files.h"

#include <optional>

namespace ferrylane {

namespace {

using platform::SecretKey;

constexpr mode_t ownersFolder = 0700;
constexpr mode_t ownersFile = 0600;

std::optional<SecretKey> storedKey()
{
    auto content = platform::readFile(ferrylaneKeyURL(), SecretKey::length);
    if (!content) return std::nullopt;

    auto key = SecretKey::fromBytes(platform::bytesOf(*content));
    platform::wipe(std::as_writable_bytes(
        std::span(content->data(), static_cast<std::size_t>(content->size()))));
    // A file that somebody has opened to others is still the key.
    if (key) static_cast<void>(platform::setMode(ferrylaneKeyURL(), ownersFile));
    return key;
}

std::error_code prepareFolder()
{
    const QString folder = applicationSupportFolder();
    const std::error_code error = platform::createFolders(folder, ownersFolder);
    // Not permitted on a folder of another owner, which may serve all the same.
    if (!error) static_cast<void>(platform::setMode(folder, ownersFolder));
    return error;
}

SecretKey keyForThisRun(const std::error_code& error)
{
    flLog(QStringLiteral("Could not persist receiver key: ")
        + QString::fromStdString(error.message()));
    return SecretKey::random();
}

} // namespace

QString ferrylaneKeyURL()
{
    return applicationSupportFolder() + QStringLiteral("/receiver-key-v1.bin");
}

SecretKey loadOrCreateFerrylaneKey()
{
    if (const std::error_code error = prepareFolder()) return keyForThisRun(error);
    if (auto stored = storedKey()) return std::move(*stored);

    SecretKey created = SecretKey::random();
    const std::error_code error
        = platform::writeFileAtomically(ferrylaneKeyURL(), created.bytes(), ownersFile);
    return error ? keyForThisRun(error) : std::move(created);
}

} // namespace ferrylane
