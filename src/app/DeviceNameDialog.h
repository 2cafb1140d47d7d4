#pragma once

#include <QString>

#include <optional>

class QWidget;

namespace ferrylane {

/// What somebody has decided about the device's name.
struct DeviceNameAnswer {
    bool usesDefault = false;
    QString typed; ///< as it was typed
};

/// Asks how this device is to be called and returns when that is decided; none when it stays.
[[nodiscard]] std::optional<DeviceNameAnswer> askForDeviceName(
    QWidget* parent, const QString& presentName);

} // namespace ferrylane
