#pragma once

#include "platform/Files.h"

#include <QLabel>

#include <functional>

namespace ferrylane {

/// A framed area that takes files dragged onto it. It looks the same while something is dragged
/// over it. Whatever is not a file of this computer, such as a web address, is not taken.
class FerrylaneDropView final : public QWidget {
public:
    explicit FerrylaneDropView(QWidget* parent = nullptr);

    /// Called with the paths of the dropped files, in their order and without the folders among
    /// them: with an empty list when there were only folders.
    std::function<void(const platform::FilePaths& paths)> onFiles;

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QLabel titleLabel_;
    QLabel detailLabel_;
};

} // namespace ferrylane
