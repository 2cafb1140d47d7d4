#include "app/widgets/FerrylaneDropView.h"

#include "app/widgets/Appearance.h"

#include <QDropEvent>
#include <QMimeData>
#include <QPainter>

namespace ferrylane {

namespace {

platform::FilePaths pathsIn(const QMimeData& data)
{
    platform::FilePaths paths;
    for (const QUrl& url : data.urls()) {
        if (const auto path = platform::FilePath::fromUrl(url)) paths << *path;
    }
    return paths;
}

/// Whatever the source proposes, such as moving: the files stay where they are.
void takeAsCopy(QDropEvent& event)
{
    event.setDropAction(Qt::CopyAction);
    event.accept();
}

} // namespace

FerrylaneDropView::FerrylaneDropView(QWidget* parent)
    : QWidget(parent), titleLabel_(QStringLiteral("Drop files here"), this), detailLabel_(this)
{
    setAcceptDrops(true);
    setAccessibleName(titleLabel_.text());
    titleLabel_.setAlignment(Qt::AlignCenter);
    titleLabel_.setFont(textFont(11, QFont::DemiBold));
    detailLabel_.setAlignment(Qt::AlignCenter);
    detailLabel_.setFont(textFont(9));
    setTextColor(detailLabel_, colors::grey);
}

void FerrylaneDropView::dragEnterEvent(QDragEnterEvent* event)
{
    if (pathsIn(*event->mimeData()).isEmpty()) {
        event->ignore();
        return;
    }
    takeAsCopy(*event);
}

void FerrylaneDropView::dragMoveEvent(QDragMoveEvent* event)
{
    takeAsCopy(*event);
}

void FerrylaneDropView::dropEvent(QDropEvent* event)
{
    const platform::FilePaths paths = pathsIn(*event->mimeData());
    if (paths.isEmpty()) {
        event->ignore();
        return;
    }
    takeAsCopy(*event);
    if (onFiles) onFiles(platform::withoutFolders(paths));
}

void FerrylaneDropView::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    drawFrame(painter, QRectF(rect()), {colors::dropArea, colors::dropAreaBorder, 1.2, 10});
}

void FerrylaneDropView::resizeEvent(QResizeEvent* /*event*/)
{
    const double pointsHigh = height() / scaled(1.0);
    const double textWidth = width() / scaled(1.0) - 20;
    place(titleLabel_, {10, 27, textWidth, 18}, pointsHigh);
    place(detailLabel_, {10, 11, textWidth, 14}, pointsHigh);
}

} // namespace ferrylane
