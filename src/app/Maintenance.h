#pragma once

#include <QString>

namespace ferrylane {

/// Removes settings, receiver key, paired phones and transfer log. Received files and the log stay.
/// What cannot be removed is left.
void removeFerrylaneData();

/// Why no file could be stored in this folder, for people; empty when it can. Creates the folder,
/// and a file in it for a moment.
[[nodiscard]] QString receiveFolderProblem(const QString& folder);

} // namespace ferrylane
