#pragma once

#include "app/widgets/PaintedButton.h"

#include <functional>

namespace ferrylane {

/// A line of text that can be clicked and shows it by its colour under the pointer, as long as its
/// window is the active one. Text that is too long is cut in the middle, and the tool tip has all
/// of it. Reachable by the Tab key and pressed by the blank, like every button.
///
/// The text is shown as it is; unlike text() of a button, "&" marks nothing in it.
///
/// Main thread.
class FerrylaneHoverLabel final : public PaintedButton {
public:
    explicit FerrylaneHoverLabel(std::function<void()> onClick, QWidget* parent = nullptr);

    QColor normalTextColor;
    QColor hoverTextColor;

    void setLabel(const QString& text);
    [[nodiscard]] QString label() const { return label_; }
    /// What is shown of the label at the present width.
    [[nodiscard]] QString shownText() const;
    /// The colour that the text has at the moment.
    [[nodiscard]] QColor textColor() const;
    [[nodiscard]] QSize sizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QString label_;
    bool isHovered_ = false;
};

} // namespace ferrylane
