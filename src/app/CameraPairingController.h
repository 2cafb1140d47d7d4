#pragma once

#include "camera/Camera.h"
#include "camera/PairingScanner.h"
#include "platform/Interface.h"

#include <atomic>
#include <functional>
#include <memory>

namespace ferrylane {

class CameraPanel;
struct OpenedPicture;

/// Lets the user show a phone's pairing code to the camera, once. Where the camera cannot be used
/// it says so and offers to do without: with the phone's link, or a picture of its code.
///
/// Main thread.
class CameraPairingController {
public:
    /// Where it asks.
    class Alerts : public platform::Interface {
    public:
        /// Says why there is no camera; returns whether the user wants to pair without.
        virtual bool pairsWithoutCamera(const QString& title, const QString& text) = 0;
    };

    /// All references must outlive this.
    struct Collaborators {
        Cameras& cameras;
        platform::SerialQueue& visionQueue;
        platform::SerialQueue& mainQueue;
        const platform::Clock& clock;
        Alerts& alerts;
    };

    explicit CameraPairingController(const Collaborators& collaborators);
    ~CameraPairingController();
    CameraPairingController(const CameraPairingController&) = delete;
    CameraPairingController& operator=(const CameraPairingController&) = delete;

    /// Gets the text of a phone's code, once, before `onClose`.
    std::function<void(const QString& text)> onCode;
    /// The scanner has ended, for whatever reason; it may be destroyed then, not sooner.
    std::function<void()> onClose;

    /// Checks the right to use the camera and opens the scanner; brings it forward when it is open.
    /// Once it has ended, nothing happens.
    void present();

private:
    void accessAnswered(bool isGranted);
    void open();
    void openWindow();
    void startCamera();
    void cameraFailed(const QString& description);
    void showPermissionError();
    /// Tells of it; goes on without a camera, or ends.
    void doWithoutCamera(const QString& title, const QString& text);
    void showFrame(const std::shared_ptr<const CameraFrame>& frame);
    void lookAt(OpenedPicture picture);
    void accept(const QString& text);
    void showInvalidCode();
    void closed();
    /// Runs on the main queue, unless this is gone by then.
    void later(std::function<void()> task);

    enum class Stage {
        idle,
        asking, ///< for the right to use the camera, or what to do without
        scanning,
        over
    };

    Collaborators with_;
    Stage stage_ = Stage::idle;
    std::shared_ptr<bool> isThere_ = std::make_shared<bool>(true);
    PairingScanner scanner_;
    std::unique_ptr<CameraPanel> panel_;
    platform::TimePoint lastShown_{};          ///< on the camera's thread
    std::atomic<bool> isFrameWaiting_ = false; ///< to be shown
    std::unique_ptr<Camera> camera_;           ///< last: its thread uses the others
};

} // namespace ferrylane
