#pragma once

#include <QString>

#include <functional>
#include <memory>

class QAction;
class QMenu;
class QSystemTrayIcon;

namespace ferrylane {

/// The program's item in the tray of the desktop, and its menu. The icon is square and shows the
/// title's text; the title is its tool tip, too. The menu also serves without a tray.
///
/// Main thread.
class StatusItem {
public:
    /// What people ask for. Members left empty are ignored.
    struct Intents {
        std::function<void()> show;
        std::function<void()> openReceivedFiles;
        std::function<void()> pairDevice;
        std::function<void()> showPairedDevices;
        std::function<void()> restart;
        std::function<void()> quit;
        /// "Service running" was chosen; its mark stays until setServiceRunning() says otherwise.
        std::function<void()> toggleService;
    };

    explicit StatusItem(Intents intents);
    ~StatusItem();
    StatusItem(const StatusItem&) = delete;
    StatusItem& operator=(const StatusItem&) = delete;

    /// "⇄", "⇄ …", "⇄ 3".
    void setTitle(const QString& title);
    [[nodiscard]] QString toolTip() const;
    /// The check mark of "Service running".
    void setServiceRunning(bool isRunning);
    [[nodiscard]] QMenu& menu() { return *menu_; }
    /// A tray is there to show the icon.
    [[nodiscard]] bool hasHost() const;
    /// Makes the icon anew, for a tray that came after the program.
    void renew();

private:
    QAction* addItem(const QString& text, std::function<void()> action);
    void fillMenu();

    Intents intents_;
    QString title_;
    bool isServiceRunning_ = false;
    std::unique_ptr<QMenu> menu_;
    std::unique_ptr<QSystemTrayIcon> icon_;
    QAction* serviceMenuItem_ = nullptr;
};

} // namespace ferrylane
