#include "app/flows/CameraPairingController.h"

#include "app/widgets/AskDialog.h"
#include "app/windows/CameraPanel.h"
#include "camera/QRDetector.h"
#include "core/Log.h"
#include "platform/Files.h"

#include <QCoreApplication>
#include <QPointer>

#include <chrono>
#include <stdexcept>
#include <utility>

namespace ferrylane {

namespace {

// Smooth enough for aiming; each picture costs a conversion.
constexpr auto previewInterval = std::chrono::milliseconds(60);

/// Empty when no code is found, or no picture.
QString textIn(const OpenedPicture& picture)
{
    try {
        const auto content = picture.path.isEmpty()
            ? picture.content
            : platform::readFile(picture.path, maximumPictureFileBytes).value_or(QByteArray());
        return detectQRCodeInFile(content).value_or(QString());
    } catch (const std::exception& error) {
        flLog(QStringLiteral("Vision QR scan error: ") + QString::fromUtf8(error.what()));
        return {};
    }
}

} // namespace

CameraPairingController::CameraPairingController(const Collaborators& collaborators)
    : with_(collaborators), scanner_(with_.visionQueue, with_.clock)
{
    connect(
        &scanner_, &PairingScanner::invalidCode, this, &CameraPairingController::showInvalidCode);
    connect(&scanner_, &PairingScanner::codeFound, this, &CameraPairingController::accept);
}

CameraPairingController::~CameraPairingController() = default;

void CameraPairingController::present()
{
    if (stage_ == Stage::scanning) panel_->present();
    if (stage_ != Stage::idle) return;
    stage_ = Stage::asking;
    if (with_.cameras.mayBeUsed()) {
        flLog(QStringLiteral("Camera permission already authorized"));
        later([this] { open(); });
    } else {
        doWithoutCamera(QStringLiteral("Camera access needed"),
            QStringLiteral("Allow Ferrylane to use the camera in System Settings \u2192 Privacy & "
                           "Security \u2192 Camera, then try Pair Device again."));
    }
}

void CameraPairingController::open()
{
    flLog(QStringLiteral("Opening camera pairing scanner"));
    if (with_.cameras.hasCamera()) {
        startCamera();
    } else {
        doWithoutCamera(QStringLiteral("No camera found"),
            QStringLiteral("Ferrylane could not find a camera on this Mac."));
    }
}

void CameraPairingController::startCamera()
{
    try {
        camera_ = with_.cameras.start(
            [this](const QVideoFrame& frame) {
                scanner_.offer(frame);
                showFrame(frame);
            },
            [this](const QString& description) {
                // Not at once: this runs within one of the camera's own steps.
                later([this, description] { cameraFailed(description); });
            });
    } catch (const std::runtime_error& error) {
        doWithoutCamera(QStringLiteral("Could not start camera"), QString::fromUtf8(error.what()));
        return;
    }
    openWindow();
}

void CameraPairingController::cameraFailed(const QString& description)
{
    // Otherwise it has been told already, or does not matter any more.
    if (stage_ != Stage::scanning) return;
    camera_ = nullptr;
    panel_ = nullptr;
    doWithoutCamera(QStringLiteral("Could not start camera"), description);
}

void CameraPairingController::doWithoutCamera(const QString& title, const QString& text)
{
    stage_ = Stage::asking;
    AskDialog dialog(&with_.parent, title, text);
    dialog.addButton(QStringLiteral("OK"));
    dialog.addButton(QStringLiteral("Pair without camera\u2026"));
    if (dialog.exec() != 2) {
        Q_EMIT closed();
        return;
    }
    openWindow();
    panel_->setNoPicture(
        QStringLiteral("No camera is used. Paste the pairing link of the phone, or open a picture "
                       "of its QR code; you can drop one here, too."));
    panel_->setStatus({});
}

void CameraPairingController::openWindow()
{
    stage_ = Stage::scanning;
    panel_ = std::make_unique<CameraPanel>();
    connect(panel_.get(), &CameraPanel::linkPasted, this,
        [this](const QString& text) { scanner_.offerText(text); });
    connect(panel_.get(), &CameraPanel::pictureOpened, this, &CameraPairingController::lookAt);
    connect(panel_.get(), &CameraPanel::closed, this, [this] {
        stage_ = Stage::over;
        camera_ = nullptr;
        later([this] { Q_EMIT closed(); });
    });
    panel_->present();
}

void CameraPairingController::showFrame(const QVideoFrame& frame)
{
    const platform::TimePoint now = with_.clock.now();
    if (now - lastShown_ < previewInterval) return;
    // A main thread that is busy gets one, not many.
    if (isFrameWaiting_.exchange(true)) return;
    lastShown_ = now;
    // The toolkit converts on the main thread only.
    later([this, frame] {
        isFrameWaiting_ = false;
        if (panel_) panel_->setPicture(frame.toImage());
    });
}

void CameraPairingController::lookAt(const OpenedPicture& picture)
{
    with_.visionQueue.async([self = QPointer(this), picture] {
        QMetaObject::invokeMethod(qApp, [self, text = textIn(picture)] {
            if (self) self->scanner_.offerText(text);
        });
    });
}

void CameraPairingController::showInvalidCode()
{
    if (panel_) panel_->setStatus(QStringLiteral("That is not a valid Ferrylane pairing QR."));
}

void CameraPairingController::accept(const QString& text)
{
    if (stage_ != Stage::scanning) return;
    stage_ = Stage::over;
    panel_->setStatus(QStringLiteral("Ferrylane QR found."));
    panel_->hide();
    camera_ = nullptr;
    Q_EMIT codeFound(text);
    Q_EMIT closed();
}

} // namespace ferrylane
