#pragma once

#include <QString>

namespace ferrylane {

/// Removes the settings, the receiver key and the paired phones. What cannot be removed is left.
void removeSettingsAndPairings();

/// Why no file could be stored in this folder, for people; empty when it can. Creates the folder,
/// and a file in it for a moment.
[[nodiscard]] QString receiveFolderProblem(const QString& folder);

/// Says, for people, which of the program's own folders cannot be written, and what that means;
/// empty when all is well. Creates the folders.
[[nodiscard]] QString storageProblem();

} // namespace ferrylane
