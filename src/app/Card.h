#pragma once

#include <QWidget>

namespace ferrylane {

/// A white area with a fine border and round corners that groups what belongs together.
///
/// Main thread.
class Card final : public QWidget {
public:
    explicit Card(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace ferrylane
