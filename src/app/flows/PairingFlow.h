#pragma once

#include "app/flows/CameraPairingController.h"
#include "camera/Camera.h"
#include "platform/ThreadQueue.h"
#include "protocol/PairingLink.h"

#include <functional>
#include <memory>

namespace ferrylane {

/// Lets the user pair a phone by its QR code and keeps it. One at a time.
class PairingFlow {
public:
    using PairedHandler = std::function<void(const FerrylanePairedTarget&)>;

    /// Dialogs stand before `parent`, which must outlive this.
    explicit PairingFlow(QWidget& parent);

    /// Opens the scanner. A phone that has been paired is kept, told of, and handed on; `onPaired`
    /// may be empty. While a scanner is open it only comes forward, and `onPaired` is dropped.
    void pairDeviceThen(PairedHandler onPaired = {});

private:
    void pair(const QString& text, const PairedHandler& onPaired);

    QWidget& parent_;
    const platform::SteadyClock clock_;
    platform::ThreadQueue visionQueue_{"ferrylane.qr.vision"};
    SystemCameras cameras_;
    std::unique_ptr<CameraPairingController> cameraPairingController_; ///< while one is open
};

} // namespace ferrylane
