#pragma once

#include <QProgressBar>

namespace ferrylane {

/// A progress bar without text, as thin as its height, with round ends.
class ThinProgressBar final : public QProgressBar {
public:
    explicit ThinProgressBar(QWidget* parent = nullptr);

    /// 0 to 100; more or less is limited, and no number at all is 0.
    void setPercent(double percent);
    [[nodiscard]] double percent() const;
    /// The percentage, which assistive technology reads.
    [[nodiscard]] QString text() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace ferrylane
