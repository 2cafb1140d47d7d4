#include "app/windows/CameraPanel.h"

#include "app/widgets/CameraPreview.h"
#include "app/widgets/FerrylaneActionButton.h"

#include <QClipboard>
#include <QCloseEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QGuiApplication>
#include <QImage>
#include <QLabel>
#include <QMimeData>

namespace ferrylane {

namespace {

constexpr int contentLeft = 24;
constexpr int contentWidth = 472;

/// The type of the picture that is dragged itself, not as a file; empty when none is.
QString pictureTypeIn(const QMimeData& data)
{
    const QStringList types = data.formats().filter(QStringLiteral("image/"));
    const QString best = QStringLiteral("image/png");
    return types.contains(best) ? best : types.value(0);
}

OpenedPicture pictureIn(const QMimeData& data)
{
    const QString type = pictureTypeIn(data);
    if (!type.isEmpty()) return {.content = data.data(type), .path = {}};
    return {.content = {}, .path = data.urls().value(0).toLocalFile()};
}

} // namespace

CameraPanel::CameraPanel()
    : PanelWindow(QStringLiteral("Ferrylane \u2014 Pair Device"), {520, 430})
    , preview_(new CameraPreview(this))
{
    setAcceptDrops(true);
    addTexts();
    placeHere(*preview_, {contentLeft, 76, contentWidth, 286});
    addButtons();
}

void CameraPanel::addTexts()
{
    placeHere(*addText(*this, QStringLiteral("Scan the QR on the phone"),
                  {20, QFont::DemiBold, colors::dark}),
        {contentLeft, 393, contentWidth, 28});
    placeHere(*addText(*this,
                  QStringLiteral("Open Ferrylane on Android and point this Mac at its pairing QR."),
                  {12, QFont::Normal, colors::grey}),
        {contentLeft, 370, contentWidth, 18});
    statusLabel_ = addText(*this, QStringLiteral("Looking for a Ferrylane QR\u2026"),
        {12, QFont::Medium, colors::dark});
    statusLabel_->setAlignment(Qt::AlignCenter);
    placeHere(*statusLabel_, {contentLeft, 50, contentWidth, 18});
}

void CameraPanel::addButtons()
{
    auto* const paste = new FerrylaneActionButton(
        QStringLiteral("Paste link"),
        [this] { Q_EMIT linkPasted(QGuiApplication::clipboard()->text().trimmed()); }, this);
    paste->setToolTip(QStringLiteral("Pair with the phone's link from the clipboard"));
    placeHere(*paste, {130, 12, 124, 28});
    auto* const open = new FerrylaneActionButton(
        QStringLiteral("Open picture\u2026"), [this] { openPicture(); }, this);
    open->setToolTip(QStringLiteral("Pair with a picture of the phone's QR code"));
    placeHere(*open, {266, 12, 124, 28});
    for (FerrylaneActionButton* const button : {paste, open}) {
        button->setFont(textFont(12));
    }
}

void CameraPanel::openPicture()
{
    const QString path
        = QFileDialog::getOpenFileName(this, QStringLiteral("Choose a picture of the QR code"),
            QString(), QStringLiteral("Pictures (*.png *.jpg *.jpeg *.bmp *.gif *.webp)"));
    if (!path.isEmpty()) Q_EMIT pictureOpened({.content = {}, .path = path});
}

void CameraPanel::setStatus(const QString& text)
{
    statusLabel_->setText(text);
}

void CameraPanel::setPicture(const QImage& picture)
{
    preview_->setPicture(picture);
}

void CameraPanel::setNoPicture(const QString& text)
{
    preview_->setText(text);
    preview_->setPicture({});
}

void CameraPanel::closeEvent(QCloseEvent* event)
{
    event->accept();
    Q_EMIT closed();
}

void CameraPanel::dragEnterEvent(QDragEnterEvent* event)
{
    const QMimeData& dragged = *event->mimeData();
    if (dragged.hasUrls() || !pictureTypeIn(dragged).isEmpty()) event->acceptProposedAction();
}

void CameraPanel::dropEvent(QDropEvent* event)
{
    event->acceptProposedAction();
    Q_EMIT pictureOpened(pictureIn(*event->mimeData()));
}

} // namespace ferrylane
