#include "app/PairingFlow.h"

#include "core/Log.h"
#include "pairing/PairedTargets.h"
#include "protocol/PairingQR.h"

#include <utility>

namespace ferrylane {

PairingFlow::PairingFlow(const Collaborators& collaborators) : with_(collaborators) {}

void PairingFlow::pairDeviceThen(PairedHandler onPaired)
{
    if (!cameraPairingController_) {
        cameraPairingController_
            = std::make_unique<CameraPairingController>(CameraPairingController::Collaborators{
                with_.cameras, with_.visionQueue, with_.mainQueue, with_.clock, with_.views});
        cameraPairingController_->onCode
            = [this, onPaired = std::move(onPaired)](const QString& text) { pair(text, onPaired); };
        cameraPairingController_->onClose = [this] { cameraPairingController_ = nullptr; };
    }
    cameraPairingController_->present();
}

void PairingFlow::pair(const QString& text, const PairedHandler& onPaired)
{
    const auto target = parseFerrylanePairingQR(text);
    if (!target) return;
    if (!saveFerrylanePairedTarget(*target)) {
        with_.views.alert(QStringLiteral("Could not save pairing"),
            QStringLiteral("Ferrylane could not save the secure pairing credential."));
        return;
    }
    flLog(QStringLiteral("Paired Mac sender with %1 at %2").arg(target->name, target->baseURL));
    with_.views.alert(QStringLiteral("Paired with ") + target->name,
        QStringLiteral("This Mac now remembers the phone securely."));
    if (onPaired) onPaired(*target);
}

} // namespace ferrylane
