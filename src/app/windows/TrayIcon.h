#pragma once

#include <QString>

#include <memory>

class QMenu;
class QSystemTrayIcon;

namespace ferrylane {

/// The program's icon in the tray of the desktop. It is square and shows the title's text; the
/// title is its tool tip, too.
class TrayIcon {
public:
    /// The menu must outlive the icon. A click triggers its first action.
    explicit TrayIcon(QMenu& menu);
    ~TrayIcon();
    TrayIcon(const TrayIcon&) = delete;
    TrayIcon& operator=(const TrayIcon&) = delete;

    /// "⇄", "⇄ …", "⇄ 3".
    void setTitle(const QString& title);
    /// Makes the icon anew, for a tray that came after the program.
    void renew();

private:
    QMenu& menu_;
    QString title_;
    std::unique_ptr<QSystemTrayIcon> icon_;
};

} // namespace ferrylane
