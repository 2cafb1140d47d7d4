#pragma once

#include "platform/SecretKey.h"

#include <QString>

namespace ferrylane {

/// The path of the file that holds the receiver key: its 32 bytes and nothing else, for its owner
/// alone. Its folder, which is not created here, holds the paired phones too.
[[nodiscard]] QString ferrylaneKeyURL();

/// The receiver key, the secret that paired phones share with this computer. Made at random and
/// stored when there is no file of exactly 32 bytes. When it cannot be stored, or there is a file
/// that cannot be read now, that is logged and a key is returned that lives in this run only.
/// Folder and file are closed to others at every load. Throws std::system_error when the system's
/// random generator fails: there is nothing to fall back on. To be called once, before anything
/// else uses the folder.
[[nodiscard]] platform::SecretKey loadOrCreateFerrylaneKey();

} // namespace ferrylane
