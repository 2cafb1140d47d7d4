#pragma once

#include <QLatin1StringView>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <optional>
#include <system_error>

namespace ferrylane {

// The keys of the user's settings. Each begins with "Ferrylane": a reset removes what does.

/// Text: path of the folder for received files; absent or empty means the default one.
inline constexpr QLatin1StringView ferrylaneReceiveFolderKey{"FerrylaneReceiveFolder"};
/// Text: this computer's name as phones see it; absent means the host's name.
inline constexpr QLatin1StringView ferrylaneDeviceNameKey{"FerrylaneDeviceName"};
/// Text: the key, as base64url, of the paired phone that files are sent to.
inline constexpr QLatin1StringView ferrylaneSelectedOutboundKeyPref{"FerrylaneSelectedOutboundKey"};
/// Boolean, false when absent: whether the transfer log may grow beyond its newest 100 entries.
inline constexpr QLatin1StringView ferrylaneTransferLogContinuousKey{
    "FerrylaneTransferLogContinuous"};
/// Boolean, true when absent: whether phones nearby can see the service.
inline constexpr QLatin1StringView ferrylaneVisibleKey{"FerrylaneVisible"};
/// Boolean, true when absent: whether the service runs.
inline constexpr QLatin1StringView ferrylaneServiceRunningKey{"FerrylaneServiceRunning"};
/// Integer, 0 when absent: seconds after which the service switches itself off; below 1 means
/// never.
inline constexpr QLatin1StringView ferrylaneAutoOffSecondsKey{"FerrylaneAutoOffSeconds"};

/// Settings in an INI file (QSettings) that only its owner can read. Safe from any thread. Values
/// are held in memory and written by a thread, several changes in one step where the disk is slow:
/// only flush() and the destructor wait for the disk.
///
/// A file that cannot be read counts as empty and is left alone. When it cannot be written, the
/// values hold for this run. Of a damaged file the lines that can be read count. What another
/// program has changed in the file meanwhile stays.
class Settings {
public:
    explicit Settings(const QString& filePath);
    ~Settings();
    Settings(const Settings&) = delete;
    Settings& operator=(const Settings&) = delete;

    [[nodiscard]] std::optional<QString> string(const QString& key) const;
    /// true, yes and 1, or false, no and 0, in any case of letters; else `fallback`.
    [[nodiscard]] bool boolean(const QString& key, bool fallback) const;
    /// 0 when there is no value, or none that reads as an integer.
    [[nodiscard]] qint64 integer(const QString& key) const;
    [[nodiscard]] QStringList keys() const;

    /// The value is kept as text.
    void set(const QString& key, const QVariant& value);
    void remove(const QString& key);

    /// Waits until every change made before is on the disk; tells why the last writing failed.
    std::error_code flush();

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// The user's settings: settings.ini in the folder Ferrylane of the user's configuration folder.
/// They stay for the life of the process. Should the configuration folder change, which happens in
/// tests only, the next call gives those of the new one.
[[nodiscard]] Settings& userSettings();

} // namespace ferrylane
