#include "app/DevicesFlow.h"

#include "core/DeviceName.h"
#include "pairing/PairedTargets.h"

#include <utility>

namespace ferrylane {

DevicesFlow::DevicesFlow(Collaborators collaborators) : with_(std::move(collaborators)) {}

void DevicesFlow::showPairedDevices()
{
    if (!devicesPanel_) {
        devicesPanel_ = std::make_unique<DevicesPanel>(DevicesPanel::Intents{
            .removePairing = [this](const auto& target) { removePairing(target); },
            .startPairing = [this] { startPairing(); },
        });
    }
    showRows();
    devicesPanel_->present();
}

void DevicesFlow::devicesChanged()
{
    if (devicesPanel_ && devicesPanel_->isVisible()) showRows();
}

void DevicesFlow::showRows()
{
    devicesPanel_->setRows(
        deviceRows(loadFerrylanePairedTargets(), with_.visibleNames(), ferrylaneDeviceSuffix()));
}

void DevicesFlow::removePairing(const FerrylanePairedTarget& target)
{
    if (!with_.confirmsRemoval(target.name)) return;
    forgetFerrylanePairedTarget(target);
    devicesChanged();
}

void DevicesFlow::startPairing()
{
    devicesPanel_->close();
    with_.pairDevice();
}

} // namespace ferrylane
