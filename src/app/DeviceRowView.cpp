#include "app/DeviceRowView.h"

#include "app/Appearance.h"
#include "app/FerrylaneActionButton.h"
#include "app/MiddleElidedLabel.h"
#include "app/PanelWindow.h"

#include <QPainter>

namespace ferrylane {

namespace {

constexpr double rowHeight = 52;
constexpr QColor border(219, 219, 219);
constexpr QColor online(52, 199, 89);

} // namespace

DeviceRowView::DeviceRowView(const Intents& intents, QWidget* parent)
    : QWidget(parent), name_(new MiddleElidedLabel(this))
{
    dot_ = addText(*this, QStringLiteral("\u25CF"), {15, QFont::Bold, online});
    place(*dot_, {12, 15, 18, 22}, rowHeight);
    setTextLook(*name_, {13, QFont::DemiBold, colors::dark});
    place(*name_, {36, 26, 270, 19}, rowHeight);
    status_ = addText(*this, QString(), {11, QFont::Normal, colors::grey});
    place(*status_, {36, 8, 270, 16}, rowHeight);
    button_ = new FerrylaneActionButton(
        QString(),
        [this, intents] {
            // The row may be gone when this returns.
            const auto target = row_.target;
            if (target) {
                intents.removePairing(*target);
            } else {
                intents.startPairing();
            }
        },
        this);
    place(*button_, {316, 11, 70, 30}, rowHeight);
}

void DeviceRowView::setRow(const DeviceRow& row)
{
    row_ = row;
    setTextColor(*dot_, row.isNearby ? online : colors::faint);
    name_->setText(row.name);
    status_->setText(deviceStatusText(row));
    button_->setFont(textFont(row.isPaired() ? 16 : 12));
    button_->setTitle(row.isPaired() ? QStringLiteral("\U0001F5D1") : QStringLiteral("Pair"));
    const QString action = row.isPaired() ? QStringLiteral("Remove pairing") : QString();
    button_->setToolTip(action);
    button_->setAccessibleName(
        (row.isPaired() ? action + QStringLiteral(" with ") : QStringLiteral("Pair "))
        + name_->text());
}

QWidget& DeviceRowView::button() const
{
    return *button_;
}

void DeviceRowView::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    drawFrame(painter, QRectF(rect()), {colors::card, border, 1, 9});
}

} // namespace ferrylane
