#pragma once

#include "app/widgets/Buttons.h"

#include <QImage>
#include <QString>

namespace ferrylane {

/// The QR code of a text, black on white, without a quiet zone. Null for a text that has no code.
[[nodiscard]] QImage qr(const QString& text, int pixelsPerModule = 1);

/// A button that shows a QR code, drawn so that cameras read it: every module has the same whole
/// number of the screen's pixels, and nothing is smoothed. The code is centred; what is around it
/// should be white.
class QRCodeButton final : public PaintedButton {
public:
    explicit QRCodeButton(QWidget* parent = nullptr);

    /// One pixel a module. Null shows none, and the button does nothing.
    void setCode(const QImage& code);
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QImage code_;
};

} // namespace ferrylane
