#include "app/windows/DevicesPanel.h"

#include "app/widgets/AskDialog.h"
#include "app/widgets/Buttons.h"
#include "app/widgets/MiddleElidedLabel.h"
#include "app/windows/KnownDevices.h"
#include "core/DeviceName.h"
#include "pairing/PairedTargets.h"

#include <QLabel>
#include <QPainter>
#include <QScrollArea>

#include <algorithm>
#include <functional>

namespace ferrylane {

namespace {

constexpr QColor background(246, 249, 253);
constexpr QColor heading(20, 41, 74);
constexpr QColor rowBorder(219, 219, 219);
constexpr QColor online(52, 199, 89);
constexpr int listWidth = 420;
constexpr int documentWidth = 400;
constexpr int rowWidth = 398;
constexpr int rowHeight = 52;
constexpr int rowDistance = 58;

int inPixels(double points)
{
    return scaled(QSize(static_cast<int>(points), 0)).width();
}

} // namespace

QList<DeviceRow> deviceRows(const QList<FerrylanePairedTarget>& paired,
    const QStringList& nearbyNames, const QString& ownName)
{
    QList<DeviceRow> rows;
    const auto targets = offeredTargets(paired, ownName);
    for (const FerrylanePairedTarget& target : targets) {
        const bool isNearby = std::any_of(nearbyNames.begin(), nearbyNames.end(),
            [&](const QString& name) { return isSameName(name, target.name); });
        rows.append({target.name, isNearby, target});
    }
    for (const QString& name : offeredNames(nearbyNames, targets, ownName)) {
        rows.append({name, true, std::nullopt});
    }
    return rows;
}

QString deviceStatusText(const DeviceRow& row)
{
    if (!row.isPaired()) return QStringLiteral("Not paired");
    return row.isNearby ? QStringLiteral("Paired \u00B7 Online")
                        : QStringLiteral("Paired \u00B7 Offline");
}

/// A device, with the button for what can be done with it.
class DeviceRowView final : public QWidget {
public:
    DeviceRowView(const std::function<void(const DeviceRow&)>& act, QWidget* parent);

    void setRow(const DeviceRow& row);
    [[nodiscard]] const DeviceRow& row() const { return row_; }
    [[nodiscard]] QWidget& button() const { return *button_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    DeviceRow row_;
    QLabel* dot_ = nullptr;
    MiddleElidedLabel* name_;
    QLabel* status_ = nullptr;
    FerrylaneActionButton* button_ = nullptr;
};

DeviceRowView::DeviceRowView(const std::function<void(const DeviceRow&)>& act, QWidget* parent)
    : QWidget(parent), name_(new MiddleElidedLabel(this))
{
    dot_ = addText(*this, QStringLiteral("\u25CF"), {15, QFont::Bold, online});
    place(*dot_, {12, 15, 18, 22}, rowHeight);
    setTextLook(*name_, {13, QFont::DemiBold, colors::dark});
    place(*name_, {36, 26, 270, 19}, rowHeight);
    status_ = addText(*this, QString(), {11, QFont::Normal, colors::grey});
    place(*status_, {36, 8, 270, 16}, rowHeight);
    // A copy: the row may be gone when this returns.
    button_ = new FerrylaneActionButton(
        QString(), [this, act] { act(DeviceRow(row_)); }, this);
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

void DeviceRowView::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    drawFrame(painter, QRectF(rect()), {colors::card, rowBorder, 1, 9});
}

DevicesPanel::DevicesPanel() : PanelWindow(QStringLiteral("Ferrylane \u2014 Devices"), {460, 500})
{
    QPalette colours = palette();
    colours.setColor(QPalette::Window, background);
    setPalette(colours);
    addHeading();
    addList();
    addButtons();
}

void DevicesPanel::addHeading()
{
    placeHere(*addText(*this, QStringLiteral("\u2699 Devices"), {20, QFont::Bold, heading}),
        {20, 455, listWidth, 28});
    QLabel* const explanation = addText(*this,
        QStringLiteral("Nearby Ferrylane devices. Paired devices can be removed; unpaired devices "
                       "can be paired."),
        {12, QFont::Normal, colors::grey});
    explanation->setWordWrap(true);
    placeHere(*explanation, {20, 411, listWidth, 38});
}

void DevicesPanel::addList()
{
    list_ = new QScrollArea(this);
    list_->setFrameShape(QFrame::NoFrame);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setAccessibleName(QStringLiteral("Devices"));
    list_->viewport()->setAutoFillBackground(false);
    placeHere(*list_, {20, 84, listWidth, 315});
    document_ = new QWidget;
    document_->setAutoFillBackground(false);
    nothing_ = addText(
        *document_, QStringLiteral("No nearby devices found."), {13, QFont::Normal, colors::grey});
    place(*nothing_, {4, 8, documentWidth - 4, 40}, rowDistance);
    list_->setWidget(document_);
    setRows({});
}

void DevicesPanel::addButtons()
{
    auto* const pair = new FerrylaneActionButton(
        QStringLiteral("Pair device with QR"), [this] { startPairing(); }, this);
    pair->setFont(textFont(12));
    placeHere(*pair, {20, 26, 170, 32});
    auto* const done = new FerrylaneActionButton(
        QStringLiteral("Done"), [this] { close(); }, this);
    done->setFont(textFont(12));
    done->setShortcut(Qt::Key_Return);
    placeHere(*done, {350, 26, 90, 32});
}

DeviceRowView* DevicesPanel::focusedRow() const
{
    const auto found = std::find_if(rows_.begin(), rows_.end(),
        [this](const DeviceRowView* row) { return &row->button() == focusWidget(); });
    return found == rows_.end() ? nullptr : *found;
}

void DevicesPanel::setNearby(const QStringList& names)
{
    nearbyNames_ = names;
    setRows(deviceRows(loadFerrylanePairedTargets(), nearbyNames_, ferrylaneDeviceSuffix()));
}

void DevicesPanel::act(const DeviceRow& row)
{
    if (!row.isPaired()) return startPairing();
    const bool isMeant = askWhether(this, QStringLiteral("Remove pairing with %1?").arg(row.name),
        QStringLiteral("This removes only the saved trust record on this Mac."),
        QStringLiteral("Remove"));
    if (!isMeant) return;
    forgetFerrylanePairedTarget(*row.target);
    setNearby(nearbyNames_);
}

void DevicesPanel::startPairing()
{
    close();
    Q_EMIT pairingRequested();
}

void DevicesPanel::setRows(const QList<DeviceRow>& rows)
{
    const DeviceRowView* const focused = focusedRow();
    const QString focusedName = focused ? focused->row().name : QString();
    while (rows_.size() > rows.size()) {
        delete rows_.takeLast();
    }
    while (rows_.size() < rows.size()) {
        auto* const view = new DeviceRowView([this](const DeviceRow& row) { act(row); }, document_);
        const QPoint place(0, inPixels(static_cast<double>(rowDistance * rows_.size())));
        view->setGeometry({place, scaled(QSize(rowWidth, rowHeight))});
        view->show();
        rows_.append(view);
    }
    for (qsizetype i = 0; i < rows.size(); ++i) {
        rows_[i]->setRow(rows[i]);
        if (focused && rows[i].name == focusedName) rows_[i]->button().setFocus();
    }
    nothing_->setVisible(rows.isEmpty());
    const int count = std::max(static_cast<int>(rows.size()), 1);
    document_->setFixedSize(scaled(QSize(documentWidth, rowDistance * count)));
}

} // namespace ferrylane
