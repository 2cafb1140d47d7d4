#pragma once

#include "app/widgets/PanelWindow.h"
#include "protocol/PairingLink.h"

#include <QList>
#include <QStringList>

#include <optional>

class QScrollArea;

namespace ferrylane {

class DeviceRowView;

/// A device in the list of devices.
struct DeviceRow {
    QString name;
    bool isNearby = false;
    std::optional<FerrylanePairedTarget> target; ///< none for a device that is not paired

    [[nodiscard]] bool isPaired() const { return target.has_value(); }
};

/// The paired phones, then the devices nearby that are not paired, each in the order of their
/// names; without this computer.
[[nodiscard]] QList<DeviceRow> deviceRows(const QList<FerrylanePairedTarget>& paired,
    const QStringList& nearbyNames, const QString& ownName);
/// "Paired · Online", "Paired · Offline" or "Not paired".
[[nodiscard]] QString deviceStatusText(const DeviceRow& row);

/// The window with the paired phones and the devices nearby, where pairings are removed. 460 x 500
/// points.
class DevicesPanel final : public PanelWindow {
    Q_OBJECT

public:
    DevicesPanel();

    /// Reads the pairings, and shows them with the names nearby. The list stays where it has been
    /// scrolled to, and the focus with its device.
    void setNearby(const QStringList& names);

Q_SIGNALS:
    /// The window has been closed for it.
    void pairingRequested();

private:
    void addHeading();
    void addList();
    void addButtons();
    void setRows(const QList<DeviceRow>& rows);
    [[nodiscard]] DeviceRowView* focusedRow() const;
    void act(const DeviceRow& row);
    void startPairing();

    QStringList nearbyNames_;
    QScrollArea* list_ = nullptr;
    QWidget* document_ = nullptr;
    QWidget* nothing_ = nullptr; ///< shown without rows
    QList<DeviceRowView*> rows_;
};

} // namespace ferrylane
