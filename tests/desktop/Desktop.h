#pragma once

#include "support/ChildProcess.h"
#include "support/PrivateHome.h"
#include "support/Waiting.h"

#include <QList>
#include <QRect>

namespace desktop {

/// A window of the program under test.
struct Window {
    QString id;
    QRect geometry; ///< without its frame, on the screen
};

/// A screen of 1280 x 800 that is only in memory, with a window manager whose task bar, at the
/// bottom, holds a tray. Ended with this object.
class Desktop {
public:
    enum class Tray { present, absent };

    /// Throws std::runtime_error when the programs are not there. `home` must outlive this.
    explicit Desktop(const support::PrivateHome& home, Tray tray = Tray::present);

    static constexpr QSize screen{1280, 800};

    /// That of the home, with this screen.
    [[nodiscard]] QProcessEnvironment environment() const;

    /// In place of the window manager that runs.
    void startWindowManager(Tray tray);

    /// Those of the program that can be seen, the icon in the tray among them.
    [[nodiscard]] QList<Window> windows(const QString& program = QStringLiteral("ferrylane")) const;
    /// The first of a size that can be seen; waits for it. Nothing found is a null geometry.
    [[nodiscard]] Window waitForWindow(const std::function<bool(QSize)>& isWanted,
        std::chrono::milliseconds limit = support::patience) const;
    [[nodiscard]] Window waitForWindow(QSize size) const;
    /// Waits until no window of that size can be seen.
    [[nodiscard]] bool waitUntilGone(QSize size) const;

    /// Waits until keys go to the window.
    [[nodiscard]] bool waitForFocus(const Window& window) const;

    void click(QPoint place, int button = 1) const;
    /// As a person drags: in small steps.
    void drag(QPoint from, QPoint to) const;
    /// Keys by their X names, to the window with the focus.
    void press(const QStringList& keys) const;
    void type(const QString& text) const;

private:
    QByteArray xdotool(const QStringList& arguments) const;

    const support::PrivateHome& home_;
    QString display_;
    support::ChildProcess server_;
    support::ChildProcess windowManager_;
};

} // namespace desktop
