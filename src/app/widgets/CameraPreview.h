#pragma once

#include <QImage>
#include <QWidget>

namespace ferrylane {

/// Shows what a camera sees as a mirror does, filling its black area with round corners; or, while
/// there is no picture, a text.
///
/// Main thread.
class CameraPreview final : public QWidget {
public:
    explicit CameraPreview(QWidget* parent = nullptr);

    void setPicture(const QImage& picture);
    void setText(const QString& text);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QImage picture_;
    QString text_;
};

} // namespace ferrylane
