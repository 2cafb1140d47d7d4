#pragma once

#include "app/DevicesPanel.h"

#include <memory>

namespace ferrylane {

/// The list of devices: shows it, keeps it up to date, and removes pairings. On the main thread.
class DevicesFlow {
public:
    struct Collaborators {
        /// The names nearby.
        std::function<QStringList()> visibleNames;
        /// Whether a pairing with this name is really to be removed.
        std::function<bool(const QString& name)> confirmsRemoval;
        std::function<void()> pairDevice;
    };

    explicit DevicesFlow(Collaborators collaborators);

    void showPairedDevices();
    /// The names nearby, or the pairings, are others now.
    void devicesChanged();

private:
    void showRows();
    void removePairing(const FerrylanePairedTarget& target);
    void startPairing();

    Collaborators with_;
    std::unique_ptr<DevicesPanel> devicesPanel_;
};

} // namespace ferrylane
