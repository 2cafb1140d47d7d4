#include "app/windows/MainPanel.h"

#include "app/widgets/Appearance.h"
#include "app/widgets/Buttons.h"
#include "app/widgets/FerrylaneDropView.h"
#include "app/widgets/MiddleElidedLabel.h"
#include "app/widgets/PanelWindow.h"
#include "app/widgets/QRCodeButton.h"
#include "app/widgets/ThinProgressBar.h"
#include "core/Text.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QPainter>
#include <QScreen>
#include <QSystemTrayIcon>

namespace ferrylane {

namespace {

constexpr QSize mainPanelSize(318, 555);
constexpr double cardX = 14;
constexpr double cardWidth = 290;
constexpr double deviceCardHeight = 159;
constexpr double sendCardHeight = 168;
constexpr double historyCardHeight = 92;

constexpr TextLook cardTitle{11, QFont::Bold, colors::dark};

/// A white area with a fine border and round corners that groups what belongs together.
class Card final : public QWidget {
public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        QPainter painter(this);
        drawFrame(painter, QRectF(rect()), {colors::card, colors::cardBorder, 1.2, 11});
    }
};

} // namespace

MainPanel::MainPanel()
    : QWidget(nullptr,
        Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint
            | Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint)
{
    setTitle(QStringLiteral("Ferrylane"));
    setPalette(lightPalette());
    setFixedSize(scaled(mainPanelSize));
    // In the order in which the Tab key goes through them.
    addHeader();
    addDeviceCard();
    addSendCard();
    addHistoryCard();
    addReceiveStatus();
}

void MainPanel::addHeader()
{
    constexpr double height = mainPanelSize.height();
    auto* const picture = new QLabel(this);
    picture->setPixmap(logo().pixmap(scaled(QSize(40, 40)), devicePixelRatioF()));
    place(*picture, {18, 497, 40, 40}, height);

    QLabel* const name
        = addText(*this, QStringLiteral("Ferrylane"), {21, QFont::Bold, colors::dark});
    place(*name, {67, 511, 185, 28}, height);
    QLabel* const maker
        = addText(*this, QStringLiteral("by TARROWBY"), {8.5, QFont::Normal, colors::grey});
    place(*maker, {68, 496, 184, 14}, height);

    auto* const settings = new FerrylaneActionButton(
        QStringLiteral("\u2699"), [this] { Q_EMIT settingsRequested(); }, this);
    settings->setLook(FerrylaneActionButton::Look::borderless);
    settings->setFont(textFont(22));
    settings->setToolTip(QStringLiteral("Settings"));
    settings->setAccessibleName(QStringLiteral("Settings"));
    place(*settings, {260, 495, 44, 44}, height);
}

void MainPanel::addDeviceCard()
{
    auto* const card = new Card(this);
    place(*card, {cardX, 324, cardWidth, deviceCardHeight}, mainPanelSize.height());

    QLabel* const title = addText(*card, QStringLiteral("My Device:"), cardTitle);
    place(*title, {16, 128, 140, 18}, deviceCardHeight);

    deviceName_ = new FerrylaneHoverLabel([this] { Q_EMIT deviceNameRequested(); }, card);
    deviceName_->setFont(textFont(12, QFont::Bold));
    deviceName_->normalTextColor = colors::dark;
    deviceName_->hoverTextColor = colors::blue;
    deviceName_->setAccessibleDescription(QStringLiteral("Name this device"));
    title->setBuddy(deviceName_);
    // Its text begins 4 points further to the right.
    place(*deviceName_, {12, 106, 146, 21}, deviceCardHeight);

    mainQRCodeButton_ = new QRCodeButton(card);
    mainQRCodeButton_->setToolTip(QStringLiteral("Click to enlarge QR"));
    mainQRCodeButton_->setAccessibleName(QStringLiteral("Pairing QR code"));
    connect(mainQRCodeButton_, &QAbstractButton::clicked, this, &MainPanel::qrCodeRequested);
    place(*mainQRCodeButton_, {171, 27, 105, 105}, deviceCardHeight);

    addServiceSwitch(*card);

    auto* const received = new FerrylaneActionButton(
        QStringLiteral("Received Files"), [this] { Q_EMIT receivedFilesRequested(); }, card);
    received->setFont(textFont(11));
    place(*received, {16, 14, 140, 28}, deviceCardHeight);
}

void MainPanel::addServiceSwitch(QWidget& card)
{
    serviceSwitch_ = new SwitchButton(&card);
    serviceSwitch_->setAccessibleName(QStringLiteral("Receiver service"));
    connect(serviceSwitch_, &QAbstractButton::clicked, this, &MainPanel::serviceSwitched);
    place(*serviceSwitch_, {13, 59, 54, 30}, deviceCardHeight);

    serviceStateText_ = addText(card, QString(), {13, QFont::Bold, colors::stateText});
    serviceStateText_->setAlignment(Qt::AlignCenter);
    place(*serviceStateText_, {70, 63, 38, 22}, deviceCardHeight);
}

void MainPanel::addSendCard()
{
    auto* const card = new Card(this);
    place(*card, {cardX, 151, cardWidth, sendCardHeight}, mainPanelSize.height());
    QLabel* const title = addText(*card, QStringLiteral("Send files"), cardTitle);
    place(*title, {16, 138, 258, 18}, sendCardHeight);
    addDropView(*card);

    sendStatusLabel_ = new MiddleElidedLabel(card);
    setTextLook(*sendStatusLabel_, {9.5, QFont::Normal, colors::grey});
    sendStatusLabel_->setAlignment(Qt::AlignCenter);
    sendStatusLabel_->setText(QStringLiteral("Choose or drop files, then select a destination"));
    place(*sendStatusLabel_, {10, 28, 270, 16}, sendCardHeight);

    sendProgressBar_ = new ThinProgressBar(card);
    sendProgressBar_->setAccessibleName(QStringLiteral("Send progress"));
    sendProgressBar_->hide();
    place(*sendProgressBar_, {14, 16, 262, 4}, sendCardHeight);
}

void MainPanel::addDropView(QWidget& card)
{
    constexpr double height = 76;
    auto* const area = new FerrylaneDropView(&card);
    area->onFiles = [this](const platform::FilePaths& paths) { Q_EMIT filesDropped(paths); };
    place(*area, {14, 54, 262, height}, sendCardHeight);

    auto* const choose = new FerrylaneActionButton(
        QStringLiteral("Drop or select files"), [this] { Q_EMIT fileChoiceRequested(); }, area);
    choose->setLook(FerrylaneActionButton::Look::filled);
    choose->setFont(textFont(10.5, QFont::DemiBold));
    choose->setCornerRadius(12);
    place(*choose, {46, 22, 170, 32}, height);
}

void MainPanel::addHistoryCard()
{
    auto* const card = new Card(this);
    place(*card, {cardX, 54, cardWidth, historyCardHeight}, mainPanelSize.height());
    QLabel* const title = addText(*card, QStringLiteral("Recent transfers"), cardTitle);
    place(*title, {16, 64, 258, 18}, historyCardHeight);

    double y = 41;
    for (MiddleElidedLabel*& row : historyLabels_) {
        row = new MiddleElidedLabel(card);
        row->setFont(textFont(10));
        place(*row, {16, y, 258, 16}, historyCardHeight);
        y -= 18;
    }
    setHistory(historyRows({}));
}

void MainPanel::addReceiveStatus()
{
    progressStatusLabel_ = addText(*this, QString(), {9.5, QFont::Normal, colors::grey});
    progressStatusLabel_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    progressStatusLabel_->hide();
    // To the left there is room for fonts that are wide and networks that are fast.
    place(*progressStatusLabel_, {14, 0, 290, 16}, mainPanelSize.height());
}

void MainPanel::setTitle(const QString& title)
{
    setWindowTitle(textForWindow(title).replace(QStringLiteral("[*]"), QStringLiteral("[*][*]")));
}

void MainPanel::setDeviceName(const QString& name)
{
    deviceName_->setLabel(name);
}

void MainPanel::setPairingCode(const QImage& code)
{
    mainQRCodeButton_->setCode(code);
}

void MainPanel::setServiceState(bool isOn, const QString& toolTip)
{
    serviceStateText_->setText(isOn ? QStringLiteral("ON") : QStringLiteral("OFF"));
    serviceSwitch_->setChecked(isOn);
    serviceStateText_->setToolTip(toolTipText(toolTip));
    serviceSwitch_->setToolTip(toolTipText(toolTip));
    serviceSwitch_->setAccessibleDescription(toolTip);
}

void MainPanel::setSendStatus(const QString& text, bool isShown)
{
    sendStatusLabel_->setText(text);
    sendStatusLabel_->setVisible(isShown);
}

void MainPanel::setSendProgress(double percent, bool isShown)
{
    sendProgressBar_->setPercent(percent);
    sendProgressBar_->setVisible(isShown);
}

void MainPanel::setReceiveStatus(const QString& text)
{
    progressStatusLabel_->setText(text);
    progressStatusLabel_->setVisible(!text.isEmpty());
}

void MainPanel::setHistory(const std::array<HistoryRow, historyRowCount>& rows)
{
    for (std::size_t i = 0; i < rows.size(); ++i) {
        historyLabels_[i]->setText(rows[i].text);
        setTextColor(*historyLabels_[i], rows[i].isPlaceholder ? colors::faint : colors::dark);
    }
}

void MainPanel::setContextMenu(QMenu* menu)
{
    for (QAction* const action : actions()) {
        removeAction(action);
    }
    menu_ = menu;
    if (menu_) addActions(menu_->actions());
}

void MainPanel::present()
{
    if (!wasCentred_) {
        move(screen()->availableGeometry().center() - rect().center());
        wasCentred_ = true;
    }
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void MainPanel::closeEvent(QCloseEvent* event)
{
    event->accept();
    if (!event->spontaneous() || QSystemTrayIcon::isSystemTrayAvailable()) return;
    event->ignore();
    showMinimized();
}

void MainPanel::contextMenuEvent(QContextMenuEvent* event)
{
    if (menu_) menu_->popup(event->globalPos());
}

} // namespace ferrylane
