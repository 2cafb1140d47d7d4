// Where the flows of the application show things and ask: the windows that AppDelegate owns.

#include "app/AppDelegate.h"
#include "app/AskDialog.h"
#include "app/FerrylaneActionButton.h"

namespace ferrylane {

void AppDelegate::setStatusTitle(const QString& title)
{
    statusItem_->setTitle(title);
}

void AppDelegate::setReceiveStatus(const QString& text)
{
    if (panel_) panel_->setReceiveStatus(text);
}

void AppDelegate::showProgressWindow()
{
    if (!transferHUD_) {
        transferHUD_ = std::make_unique<TransferHUD>([this] { stopCurrentTransfer(); });
    }
    transferHUD_->present();
}

void AppDelegate::setProgress(const QString& fileName, double percent, const QString& text)
{
    if (transferHUD_) transferHUD_->setTransfer(fileName, percent, text);
}

void AppDelegate::closeProgressWindow()
{
    // Not destroyed here: its button may be what asked for this.
    if (!transferHUD_) return;
    transferHUD_->hide();
    transferHUD_.release()->deleteLater();
}

SendChoice AppDelegate::chooseReceiver(const QString& question, const QList<SendChoice>& choices)
{
    return askForReceiver(panel_.get(), question, choices);
}

void AppDelegate::alert(const QString& title, const QString& text)
{
    AskDialog dialog(panel_.get(), title, text);
    dialog.addButton(QStringLiteral("OK"));
    dialog.exec();
}

void AppDelegate::inform(const QString& title, const QString& text)
{
    auto* const dialog = new AskDialog(panel_.get(), title, text);
    dialog->addButton(QStringLiteral("OK"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
}

bool AppDelegate::pairsWithoutCamera(const QString& title, const QString& text)
{
    AskDialog dialog(panel_.get(), title, text);
    dialog.addButton(QStringLiteral("OK"));
    dialog.addButton(QStringLiteral("Pair without camera\u2026"));
    return dialog.exec() == 2;
}

void AppDelegate::setSendStatus(const QString& text, bool isShown)
{
    if (panel_) panel_->setSendStatus(text, isShown);
}

void AppDelegate::setSendProgress(double percent, bool isShown)
{
    if (panel_) panel_->setSendProgress(percent, isShown);
}

} // namespace ferrylane
