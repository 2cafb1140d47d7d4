#pragma once

#include "platform/DefaultsStore.h"

#include <QLatin1StringView>

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

/// The user's settings: settings.ini in the folder Ferrylane of the user's configuration folder.
/// Safe from any thread; the store stays for the life of the process. Should the configuration
/// folder change, which happens in tests only, the next call gives the store of the new one.
[[nodiscard]] platform::DefaultsStore& standardDefaults();

} // namespace ferrylane
