#include "app/StatusItem.h"

#include "app/TitleIcon.h"

#include <QMenu>
#include <QSystemTrayIcon>

namespace ferrylane {

StatusItem::StatusItem(Intents intents)
    : intents_(std::move(intents))
    , title_(QStringLiteral("\u21C4"))
    , menu_(std::make_unique<QMenu>())
{
    fillMenu();
    renew();
}

// Out of line for the types that the header does not know. The icon goes before its menu.
StatusItem::~StatusItem()
{
    icon_.reset();
}

QAction* StatusItem::addItem(const QString& text, std::function<void()> action)
{
    QAction* const item = menu_->addAction(text);
    if (action) QObject::connect(item, &QAction::triggered, item, std::move(action));
    return item;
}

void StatusItem::fillMenu()
{
    addItem(QStringLiteral("Show Ferrylane"), intents_.show);
    serviceMenuItem_ = addItem(QStringLiteral("Service running"), [this] {
        // The toolkit has turned the mark already, but the service decides.
        serviceMenuItem_->setChecked(isServiceRunning_);
        if (intents_.toggleService) intents_.toggleService();
    });
    serviceMenuItem_->setCheckable(true);
    addItem(QStringLiteral("Open Received Files"), intents_.openReceivedFiles);
    addItem(QStringLiteral("Pair Device\u2026"), intents_.pairDevice);
    addItem(QStringLiteral("Paired Devices\u2026"), intents_.showPairedDevices);
    menu_->addSeparator();
    addItem(QStringLiteral("Restart Ferrylane"), intents_.restart)
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_R));
    addItem(QStringLiteral("Quit Ferrylane"), intents_.quit)
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
}

void StatusItem::setTitle(const QString& title)
{
    title_ = title;
    icon_->setIcon(titleIcon(title_));
    icon_->setToolTip(title_);
}

QString StatusItem::toolTip() const
{
    return icon_->toolTip();
}

void StatusItem::setServiceRunning(bool isRunning)
{
    isServiceRunning_ = isRunning;
    serviceMenuItem_->setChecked(isRunning);
}

bool StatusItem::hasHost() const
{
    return QSystemTrayIcon::isSystemTrayAvailable();
}

void StatusItem::renew()
{
    icon_ = std::make_unique<QSystemTrayIcon>();
    icon_->setContextMenu(menu_.get());
    QObject::connect(icon_.get(), &QSystemTrayIcon::activated, icon_.get(),
        [this](QSystemTrayIcon::ActivationReason reason) {
            if (reason == QSystemTrayIcon::Trigger && intents_.show) intents_.show();
        });
    setTitle(title_);
    icon_->show();
}

} // namespace ferrylane
