#pragma once

#include "app/widgets/PaintedButton.h"

namespace ferrylane {

/// A two-state switch: a knob in a track, blue when on. To assistive technology it is a check box.
/// clicked() reports what people do, toggled() every change.
///
/// Main thread. 54 x 30 points (see Appearance.h) unless resized; keeps that shape.
class SwitchButton final : public PaintedButton {
public:
    explicit SwitchButton(QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace ferrylane
