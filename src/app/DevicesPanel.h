#pragma once

#include "app/DeviceRowView.h"
#include "app/PanelWindow.h"

class QScrollArea;

namespace ferrylane {

/// The window with the paired phones and the devices nearby. 460 x 500 points.
///
/// Main thread.
class DevicesPanel final : public PanelWindow {
public:
    using Intents = DeviceRowView::Intents;

    explicit DevicesPanel(Intents intents);

    /// The list stays where it has been scrolled to, and the focus with its device.
    void setRows(const QList<DeviceRow>& rows);

private:
    void addHeading();
    void addList();
    void addButtons();
    [[nodiscard]] DeviceRowView* focusedRow() const;

    Intents intents_;
    QScrollArea* list_ = nullptr;
    QWidget* document_ = nullptr;
    QWidget* nothing_ = nullptr; ///< shown without rows
    QList<DeviceRowView*> rows_;
};

} // namespace ferrylane
