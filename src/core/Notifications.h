#pragma once

#include <QLatin1StringView>

namespace ferrylane {

// The names of the program's notifications and of the value that each carries.

/// QString: the safe name of the file that a phone has begun to upload.
inline constexpr QLatin1StringView FerrylaneStarted{"FerrylaneStarted"};
/// double: how much of the upload has come, 0.0 to 1.0.
inline constexpr QLatin1StringView FerrylaneProgress{"FerrylaneProgress"};
/// double: the upload's speed in megabytes (1,000,000 bytes) a second.
inline constexpr QLatin1StringView FerrylaneSpeed{"FerrylaneSpeed"};
/// QString: why an upload failed or was cancelled.
inline constexpr QLatin1StringView FerrylaneStopped{"FerrylaneStopped"};
/// QString: the file name under which an upload has been stored.
inline constexpr QLatin1StringView FerrylaneReceived{"FerrylaneReceived"};
/// No value: an entry was appended to the transfer log.
inline constexpr QLatin1StringView FerrylaneTransferLogChanged{"FerrylaneTransferLogChanged"};

} // namespace ferrylane
