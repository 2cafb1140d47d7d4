#pragma once

#include "camera/Camera.h"
#include "platform/Clock.h"
#include "platform/SerialQueue.h"

#include <functional>
#include <memory>

namespace ferrylane {

/// Looks for a phone's pairing code in the pictures of a camera: at most five times a second, one
/// at a time, and not in between. The first valid code ends it.
class PairingScanner {
public:
    using Detect = std::function<std::optional<QString>(const LuminanceView&)>;

    /// All references must outlive this.
    struct Collaborators {
        platform::SerialQueue& visionQueue; ///< where pictures are looked at
        platform::SerialQueue& mainQueue;   ///< where the handlers are called
        const platform::Clock& clock;
        Detect detect;
    };
    struct Handlers {
        /// A code was seen that is none of a phone.
        std::function<void()> onInvalidCode;
        /// The text of a phone's code; once.
        std::function<void(const QString& text)> onCode;
    };

    PairingScanner(Collaborators collaborators, Handlers handlers);
    /// On the main thread. No handler is called any more.
    ~PairingScanner();
    PairingScanner(const PairingScanner&) = delete;
    PairingScanner& operator=(const PairingScanner&) = delete;

    /// From any thread; returns at once.
    void offer(const std::shared_ptr<const CameraFrame>& frame);
    /// A text that came another way than by the camera. On the main thread.
    void offerText(const QString& text);

private:
    class Scan;
    std::shared_ptr<Scan> scan_;
};

} // namespace ferrylane
