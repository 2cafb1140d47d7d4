// Another program's window, from which the files named on its command line can be dragged.

#include <QApplication>
#include <QDrag>
#include <QMimeData>
#include <QMouseEvent>
#include <QUrl>
#include <QWidget>

namespace {

class DragSource final : public QWidget {
public:
    explicit DragSource(QList<QUrl> files) : files_(std::move(files)) {}

protected:
    void mouseMoveEvent(QMouseEvent* event) override
    {
        if (!event->buttons().testFlag(Qt::LeftButton)) return;
        auto* const drag = new QDrag(this);
        auto* const content = new QMimeData;
        content->setUrls(files_);
        drag->setMimeData(content);
        drag->exec(Qt::CopyAction);
    }

private:
    QList<QUrl> files_;
};

} // namespace

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    QList<QUrl> files;
    for (const QString& path : QCoreApplication::arguments().sliced(1)) {
        files.append(QUrl::fromLocalFile(path));
    }
    DragSource source(files);
    source.setFixedSize(200, 100);
    source.show();
    return QApplication::exec();
}
