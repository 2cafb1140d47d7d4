#pragma once

#include "app/CameraPairingController.h"
#include "protocol/PairedTarget.h"

namespace ferrylane {

/// Lets the user pair a phone by its QR code and keeps it. One at a time. On the main thread.
class PairingFlow {
public:
    /// Where it asks and tells; each returns when the user has answered.
    class Views : public CameraPairingController::Alerts {
    public:
        virtual void alert(const QString& title, const QString& text) = 0;
    };
    /// All references must outlive this.
    struct Collaborators {
        Cameras& cameras;
        platform::SerialQueue& visionQueue;
        platform::SerialQueue& mainQueue;
        const platform::Clock& clock;
        Views& views;
    };
    using PairedHandler = std::function<void(const FerrylanePairedTarget&)>;

    explicit PairingFlow(const Collaborators& collaborators);

    /// Opens the scanner. A phone that has been paired is kept, told of, and handed on; `onPaired`
    /// may be empty. While a scanner is open it only comes forward, and `onPaired` is dropped.
    void pairDeviceThen(PairedHandler onPaired);

private:
    void pair(const QString& text, const PairedHandler& onPaired);

    Collaborators with_;
    std::unique_ptr<CameraPairingController> cameraPairingController_;
};

} // namespace ferrylane
