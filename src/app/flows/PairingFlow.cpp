#include "app/flows/PairingFlow.h"

#include "app/widgets/AskDialog.h"
#include "core/Log.h"
#include "pairing/PairedTargets.h"
#include "protocol/PairingLink.h"

#include <utility>

namespace ferrylane {

PairingFlow::PairingFlow(QWidget& parent) : parent_(parent) {}

void PairingFlow::pairDeviceThen(PairedHandler onPaired)
{
    if (!cameraPairingController_) {
        cameraPairingController_ = std::make_unique<CameraPairingController>(
            CameraPairingController::Collaborators{cameras_, visionQueue_, clock_, parent_});
        QObject::connect(cameraPairingController_.get(), &CameraPairingController::codeFound,
            [this, onPaired = std::move(onPaired)](const QString& text) { pair(text, onPaired); });
        // Not destroyed at once: this runs within one of its own steps.
        QObject::connect(cameraPairingController_.get(), &CameraPairingController::closed, [this] {
            if (auto* const ended = cameraPairingController_.release()) ended->deleteLater();
        });
    }
    cameraPairingController_->present();
}

void PairingFlow::pair(const QString& text, const PairedHandler& onPaired)
{
    const auto target = parseFerrylanePairingQR(text);
    if (!target) return;
    if (!saveFerrylanePairedTarget(*target)) {
        tell(&parent_, QStringLiteral("Could not save pairing"),
            QStringLiteral("Ferrylane could not save the secure pairing credential."));
        return;
    }
    flLog(QStringLiteral("Paired Mac sender with %1 at %2").arg(target->name, target->baseURL));
    tell(&parent_, QStringLiteral("Paired with ") + target->name,
        QStringLiteral("This Mac now remembers the phone securely."));
    if (onPaired) onPaired(*target);
}

} // namespace ferrylane
