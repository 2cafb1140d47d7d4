#pragma once

#include "camera/Camera.h"
#include "camera/PairingScanner.h"

#include <QObject>

#include <atomic>
#include <memory>
#include <utility>

class QWidget;

namespace ferrylane {

class CameraPanel;
struct OpenedPicture;

/// Lets the user show a phone's pairing code to the camera, once. Where the camera cannot be used
/// it says so and offers to do without: with the phone's link, or a picture of its code.
class CameraPairingController final : public QObject {
    Q_OBJECT

public:
    /// All references must outlive this. Dialogs stand before `parent`.
    struct Collaborators {
        Cameras& cameras;
        platform::ThreadQueue& visionQueue; ///< where pictures are looked at
        const platform::Clock& clock;
        QWidget& parent;
    };

    explicit CameraPairingController(const Collaborators& collaborators);
    ~CameraPairingController() override;

    /// Checks the right to use the camera and opens the scanner; brings it forward when it is open.
    /// Once it has ended, nothing happens.
    void present();

Q_SIGNALS:
    /// The text of a phone's code, once, before closed().
    void codeFound(const QString& text);
    /// The scanner has ended, for whatever reason.
    void closed();

private:
    void open();
    void openWindow();
    void startCamera();
    void cameraFailed(const QString& description);
    /// Tells of it; goes on without a camera, or ends.
    void doWithoutCamera(const QString& title, const QString& text);
    void showFrame(const QVideoFrame& frame);
    void lookAt(const OpenedPicture& picture);
    void accept(const QString& text);
    void showInvalidCode();
    /// Not at once, and not when this is gone by then. From any thread.
    template <typename Task> void later(Task task)
    {
        QMetaObject::invokeMethod(this, std::move(task), Qt::QueuedConnection);
    }

    enum class Stage {
        idle,
        asking, ///< what to do without a camera
        scanning,
        over
    };

    Collaborators with_;
    Stage stage_ = Stage::idle;
    PairingScanner scanner_;
    std::unique_ptr<CameraPanel> panel_;
    platform::TimePoint lastShown_{};          ///< on the camera's thread
    std::atomic<bool> isFrameWaiting_ = false; ///< to be shown
    std::unique_ptr<QObject> camera_;          ///< last: its thread uses the others
};

} // namespace ferrylane
