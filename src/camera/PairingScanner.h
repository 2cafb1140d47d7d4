#pragma once

#include "platform/Clock.h"
#include "platform/ThreadQueue.h"

#include <QObject>
#include <QVideoFrame>

#include <memory>

namespace ferrylane {

/// Looks for a phone's pairing code in the pictures of a camera: at most five times a second, one
/// at a time, and not in between. The first valid code ends it. Lives on the main thread.
class PairingScanner final : public QObject {
    Q_OBJECT

public:
    /// Pictures are looked at on `visionQueue`. Both must outlive this.
    PairingScanner(platform::ThreadQueue& visionQueue, const platform::Clock& clock);
    ~PairingScanner() override;

    /// From any thread; returns at once.
    void offer(const QVideoFrame& frame);
    /// A text that came another way than by the camera. On the main thread.
    void offerText(const QString& text);

Q_SIGNALS:
    /// A code was seen that is none of a phone.
    void invalidCode();
    /// The text of a phone's code; once.
    void codeFound(const QString& text);

private:
    struct Scan;

    platform::ThreadQueue& visionQueue_;
    const platform::Clock& clock_;
    std::shared_ptr<Scan> scan_; ///< a picture may still be looked at when this has gone
};

} // namespace ferrylane
