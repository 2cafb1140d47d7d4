#include "app/windows/CameraPanel.h"

#include "app/widgets/Appearance.h"
#include "app/widgets/Buttons.h"

#include <QClipboard>
#include <QCloseEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QGuiApplication>
#include <QImage>
#include <QLabel>
#include <QMimeData>
#include <QPainter>
#include <QPainterPath>

namespace ferrylane {

namespace {

constexpr int contentLeft = 24;
constexpr int contentWidth = 472;
constexpr double previewRadius = 12;
constexpr double textMargin = 40;

/// The middle part of a picture that has the proportions of an area.
QRectF partLike(const QSizeF& area, const QSizeF& picture)
{
    const QSizeF part = area.scaled(picture, Qt::KeepAspectRatio);
    return {QPointF((picture.width() - part.width()) / 2, (picture.height() - part.height()) / 2),
        part};
}

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

/// Shows what a camera sees as a mirror does, filling its black area with round corners; or, while
/// there is no picture, a text.
class CameraPreview final : public QWidget {
public:
    using QWidget::QWidget;

    void setPicture(const QImage& picture);
    void setText(const QString& text);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QImage picture_;
    QString text_;
};

void CameraPreview::setPicture(const QImage& picture)
{
    picture_ = picture;
    update();
}

void CameraPreview::setText(const QString& text)
{
    text_ = text;
    setAccessibleName(text);
    update();
}

void CameraPreview::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    QPainterPath area;
    area.addRoundedRect(QRectF(rect()), scaled(previewRadius), scaled(previewRadius));
    painter.setClipPath(area);
    painter.fillRect(rect(), Qt::black);
    if (!picture_.isNull()) {
        // What is on the left of whoever looks stays on the left.
        painter.translate(width(), 0);
        painter.scale(-1, 1);
        painter.drawImage(QRectF(rect()), picture_, partLike(size(), picture_.size()));
        return;
    }
    const int margin = static_cast<int>(scaled(textMargin));
    painter.setFont(textFont(13));
    painter.setPen(Qt::white);
    painter.drawText(
        rect().adjusted(margin, 0, -margin, 0), Qt::AlignCenter | Qt::TextWordWrap, text_);
}

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
