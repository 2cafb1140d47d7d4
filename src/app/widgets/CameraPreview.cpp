#include "app/widgets/CameraPreview.h"

#include "app/widgets/Appearance.h"

#include <QPainter>
#include <QPainterPath>

namespace ferrylane {

namespace {

constexpr double previewRadius = 12;
constexpr double textMargin = 40;

/// The middle part of a picture that has the proportions of an area.
QRectF partLike(const QSizeF& area, const QSizeF& picture)
{
    const QSizeF part = area.scaled(picture, Qt::KeepAspectRatio);
    return {QPointF((picture.width() - part.width()) / 2, (picture.height() - part.height()) / 2),
        part};
}

} // namespace

CameraPreview::CameraPreview(QWidget* parent) : QWidget(parent) {}

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

} // namespace ferrylane
