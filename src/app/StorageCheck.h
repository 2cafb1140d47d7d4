#pragma once

#include <QString>

namespace ferrylane {

/// Says, for people, which of the program's own folders cannot be written, and what that means;
/// empty when all is well. Creates the folders.
[[nodiscard]] QString storageProblem();

} // namespace ferrylane
