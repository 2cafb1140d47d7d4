#include "app/DeviceNameDialog.h"

#include "app/Appearance.h"
#include "app/AskDialog.h"
#include "app/FerrylaneActionButton.h"

#include <QLineEdit>

namespace ferrylane {

std::optional<DeviceNameAnswer> askForDeviceName(QWidget* parent, const QString& presentName)
{
    enum Button { save = 1, useDefault };
    AskDialog dialog(parent, QStringLiteral("Name this device"),
        QStringLiteral("Choose the device name shown to nearby Ferrylane devices."));
    auto* const name = new QLineEdit(presentName);
    name->setMinimumWidth(scaled(QSize(280, 0)).width());
    name->setAccessibleName(QStringLiteral("Device name"));
    name->selectAll();
    dialog.addControl(*name);
    dialog.addButton(QStringLiteral("Save"));
    dialog.addButton(QStringLiteral("Use Default"));
    dialog.addButton(QStringLiteral("Cancel"));
    name->setFocus();
    switch (dialog.exec()) {
    case save:
        return DeviceNameAnswer{false, name->text()};
    case useDefault:
        return DeviceNameAnswer{true, {}};
    default:
        return std::nullopt;
    }
}

} // namespace ferrylane
