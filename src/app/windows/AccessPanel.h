#pragma once

#include "app/widgets/PanelWindow.h"

class QImage;

namespace ferrylane {

/// The window that shows this computer's pairing code large, and its address. 360 x 410 points.
class AccessPanel final : public PanelWindow {
public:
    /// `code` has one pixel a module; `address` is without the key.
    AccessPanel(const QImage& code, const QString& address);
};

} // namespace ferrylane
