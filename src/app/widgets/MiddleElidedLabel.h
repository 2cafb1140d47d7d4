#pragma once

#include <QLabel>

namespace ferrylane {

/// One line of plain text as textForWindow() has it, cut in the middle when it is too long for its
/// place, so that a file name keeps its extension. text() stays whole; the tool tip shows it while
/// it is cut. May be made narrower than its text.
class MiddleElidedLabel final : public QLabel {
public:
    explicit MiddleElidedLabel(QWidget* parent = nullptr);

    void setText(const QString& text);
    /// What is shown of text() at the present width.
    [[nodiscard]] QString shownText() const;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};

} // namespace ferrylane
