#pragma once

#include "app/widgets/PanelWindow.h"

#include <QByteArray>
#include <QString>

class QImage;

namespace ferrylane {

class CameraPreview;

/// A picture as it came, of any kind and size: reading and decoding it is not for the main thread.
struct OpenedPicture {
    QByteArray content; ///< of a picture's file
    QString path;       ///< of the file, where the content is still to be read
};

/// The window in which a phone's pairing code is scanned. Where there is no camera, or the code
/// cannot be held before it, the phone's link can be pasted, and a picture of the code be opened
/// or dropped. 520 x 430 points.
class CameraPanel final : public PanelWindow {
    Q_OBJECT

public:
    CameraPanel();

    void setStatus(const QString& text);
    void setPicture(const QImage& picture);
    /// In place of the picture.
    void setNoPicture(const QString& text);

Q_SIGNALS:
    void linkPasted(const QString& text);
    void pictureOpened(const OpenedPicture& picture);
    /// By the user; not by hide().
    void closed();

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void addTexts();
    void addButtons();
    void openPicture();

    CameraPreview* preview_;
    QLabel* statusLabel_ = nullptr;
};

} // namespace ferrylane
