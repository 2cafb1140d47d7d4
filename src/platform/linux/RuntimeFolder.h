#pragma once

#include "platform/linux/FileDescriptor.h"

#include <QString>

namespace platform {

/// Opens the folder of `program` for what belongs to this user and this run of the computer,
/// created with mode 0700 when missing: in $XDG_RUNTIME_DIR where that is the user's own, else in
/// the folder for temporary files. Another user can neither enter it nor have made it. Not open
/// when there is no such folder, and lastError() tells why.
[[nodiscard]] FileDescriptor openRuntimeFolder(const QString& program);

} // namespace platform
