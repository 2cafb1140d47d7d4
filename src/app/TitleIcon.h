#pragma once

#include <QIcon>

namespace ferrylane {

/// The title of the status item as a square icon: the arrows "⇄", with what follows them under
/// them. White on the program's blue, as the tray behind it may be light, dark or anything between.
/// Drawn for each usual size by itself, so that lines fall on whole pixels.
[[nodiscard]] QIcon titleIcon(const QString& title);

} // namespace ferrylane
