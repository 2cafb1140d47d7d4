#include "pairing/ReceiverKeyStore.h"

#include "core/Log.h"
#include "core/StoragePaths.h"
#include "platform/Crypto.h"

#include <optional>

namespace ferrylane {

namespace {

using platform::SecretKey;

/// `error` only when there may be a key that cannot be read now.
std::optional<SecretKey> storedKey(std::error_code& error)
{
    auto content = platform::readFile(ferrylaneKeyURL(), SecretKey::length, error);
    const bool isNone = error == std::errc::no_such_file_or_directory
        || error == std::errc::file_too_large || error == std::errc::invalid_argument;
    if (isNone) error = {};
    if (!content) return std::nullopt;

    auto key = SecretKey::fromBytes(platform::bytesOf(*content));
    platform::wipe(std::as_writable_bytes(
        std::span(content->data(), static_cast<std::size_t>(content->size()))));
    return key;
}

SecretKey keyForThisRun(const std::error_code& error)
{
    flLog(QStringLiteral("Could not persist receiver key"), error);
    return SecretKey::random();
}

} // namespace

QString ferrylaneKeyURL()
{
    return applicationSupportFolder() + QStringLiteral("/receiver-key-v1.bin");
}

SecretKey loadOrCreateFerrylaneKey()
{
    if (const auto error = prepareOwnFolder(applicationSupportFolder())) {
        return keyForThisRun(error);
    }
    std::error_code error;
    if (auto stored = storedKey(error)) return std::move(*stored);
    if (error) return keyForThisRun(error);

    SecretKey created = SecretKey::random();
    error = writeOwnFile(ferrylaneKeyURL(), created.bytes());
    return error ? keyForThisRun(error) : std::move(created);
}

} // namespace ferrylane
