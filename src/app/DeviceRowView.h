#pragma once

#include "app/DeviceRows.h"

#include <QWidget>

#include <functional>

class QLabel;

namespace ferrylane {

class FerrylaneActionButton;
class MiddleElidedLabel;

/// A device in the list of devices, with the button for what can be done with it. 398 x 52 points.
///
/// Main thread.
class DeviceRowView final : public QWidget {
public:
    struct Intents {
        std::function<void(const FerrylanePairedTarget&)> removePairing;
        std::function<void()> startPairing;
    };

    DeviceRowView(const Intents& intents, QWidget* parent);

    void setRow(const DeviceRow& row);
    [[nodiscard]] const DeviceRow& row() const { return row_; }
    [[nodiscard]] QWidget& button() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    DeviceRow row_;
    QLabel* dot_ = nullptr;
    MiddleElidedLabel* name_;
    QLabel* status_ = nullptr;
    FerrylaneActionButton* button_ = nullptr;
};

} // namespace ferrylane
