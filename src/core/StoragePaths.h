#pragma once

#include <QString>

namespace ferrylane {

/// The folder of the program's own data: key, paired phones and transfer log. Not created here.
[[nodiscard]] QString applicationSupportFolder();

/// The folder of the log file. Not created here.
[[nodiscard]] QString logFolder();

/// The folder for received files: the one that the user has chosen, else the folder Ferrylane among
/// the user's downloads. It is created when missing; when that fails, it is returned all the same.
[[nodiscard]] QString receiveDir();

} // namespace ferrylane
