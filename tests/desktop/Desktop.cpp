#include "Desktop.h"

#include "support/Sanitizers.h"
#include "support/StartDaemon.h"
#include "support/TestFiles.h"
#include "support/Waiting.h"

#include <QThread>

namespace desktop {

using namespace Qt::StringLiterals;

Desktop::Desktop(const support::PrivateHome& home, Tray tray) : home_(home)
{
    const QString output = home_.ownFile(u"display"_s);
    support::writeFile(output, {});
    const QString size = u"%1x%2x24"_s.arg(screen.width()).arg(screen.height());
    // It picks a number that is free, and tells it once it serves.
    support::startDaemon(server_,
        {.program = u"/usr/bin/Xvfb"_s,
            .arguments
            = {u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s, size, u"-nolisten"_s, u"tcp"_s,
                // Or it starts over when the first program that looks for windows has gone, under
                // the window manager that is just starting.
                u"-noreset"_s},
            .environment = home_.environment(),
            .outputFile = output,
            .errorFile = home_.ownFile(u"display-errors"_s)},
        "\n");
    display_ = u":"_s + QString::fromLatin1(support::contentOf(output)).trimmed();
    startWindowManager(tray);
}

QProcessEnvironment Desktop::environment() const
{
    QProcessEnvironment environment = home_.environment();
    environment.insert(u"DISPLAY"_s, display_);
    environment.insert(u"QT_QPA_PLATFORM"_s, u"xcb"_s);
    environment.remove(u"WAYLAND_DISPLAY"_s);
    // Or each program starts a bus for this display, for which the next one may wait without end.
    environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"disabled:"_s);
    return environment;
}

void Desktop::startWindowManager(Tray tray)
{
    windowManager_.kill();
    const QByteArray hasTray = tray == Tray::present ? "1" : "0";
    support::writeFile(home_.path() + u"/.icewm/preferences"_s,
        "TaskBarEnableSystemTray=" + hasTray
            + "\nTaskBarShowCPUStatus=0\nTaskBarShowMEMStatus=0\n"
              "TaskBarShowNetStatus=0\nShowPopupsAbovePointer=1\n");
    windowManager_.start({.program = u"/usr/bin/icewm"_s,
        .environment = environment(),
        .outputFile = home_.ownFile(u"icewm"_s),
        .errorFile = home_.ownFile(u"icewm-errors"_s)});
    // Its task bar is the sign that it manages windows.
    if (!support::waitUntil([this] {
            return !xdotool({u"search"_s, u"--onlyvisible"_s, u"--name"_s, u"^TaskBar$"_s})
                        .isEmpty();
        })) {
        throw std::runtime_error("no window manager");
    }
}

QByteArray Desktop::xdotool(const QStringList& arguments) const
{
    const QString output = home_.ownFile(u"xdotool"_s);
    support::writeFile(output, {});
    support::ChildProcess process;
    process.start({.program = u"/usr/bin/xdotool"_s,
        .arguments = arguments,
        .environment = environment(),
        .outputFile = output,
        .errorFile = home_.ownFile(u"xdotool-errors"_s)});
    static_cast<void>(process.waitForEnd(support::patience));
    return support::contentOf(output);
}

QList<Window> Desktop::windows(const QString& program) const
{
    QList<Window> windows;
    const QByteArray answer = xdotool({u"search"_s, u"--onlyvisible"_s, u"--class"_s, program,
        u"getwindowgeometry"_s, u"--shell"_s, u"%@"_s});
    for (const QByteArray& line : answer.split('\n')) {
        const QByteArray name = line.first(std::max(line.indexOf('='), qsizetype(0)));
        const QByteArray value = line.sliced(line.indexOf('=') + 1);
        if (name == "WINDOW") windows.append({QString::fromLatin1(value), {}});
        if (windows.isEmpty()) continue;
        QRect& geometry = windows.last().geometry;
        if (name == "X") geometry.moveLeft(value.toInt());
        if (name == "Y") geometry.moveTop(value.toInt());
        if (name == "WIDTH") geometry.setWidth(value.toInt());
        if (name == "HEIGHT") geometry.setHeight(value.toInt());
    }
    return windows;
}

Window Desktop::waitForWindow(
    const std::function<bool(QSize)>& isWanted, std::chrono::milliseconds limit) const
{
    Window found;
    const auto isThere = [&] {
        for (const Window& window : windows()) {
            if (isWanted(window.geometry.size())) found = window;
        }
        return !found.id.isEmpty();
    };
    static_cast<void>(support::waitUntil(isThere, limit));
    return found;
}

Window Desktop::waitForWindow(QSize size) const
{
    return waitForWindow([size](QSize other) { return other == size; });
}

bool Desktop::waitUntilGone(QSize size) const
{
    return support::waitUntil([&] {
        const QList<Window> all = windows();
        return std::none_of(all.begin(), all.end(),
            [size](const Window& window) { return window.geometry.size() == size; });
    });
}

bool Desktop::waitForFocus(const Window& window) const
{
    return support::waitUntil(
        [&] { return xdotool({u"getwindowfocus"_s}).trimmed() == window.id.toLatin1(); });
}

void Desktop::click(QPoint place, int button) const
{
    xdotool({u"mousemove"_s, QString::number(place.x()), QString::number(place.y()), u"click"_s,
        QString::number(button)});
}

void Desktop::drag(QPoint from, QPoint to) const
{
    constexpr int steps = 8;
    const QString pause = support::isSanitized ? u"0.3"_s : u"0.1"_s;
    QStringList arguments{u"mousemove"_s, QString::number(from.x()), QString::number(from.y()),
        u"mousedown"_s, u"1"_s};
    for (int i = 1; i <= steps + 1; ++i) {
        // The last one is a small move on the target.
        const QPoint place = i <= steps ? from + (to - from) * i / steps : to + QPoint(2, 2);
        arguments += {u"mousemove"_s, QString::number(place.x()), QString::number(place.y()),
            u"sleep"_s, pause};
    }
    xdotool(arguments + QStringList{u"mouseup"_s, u"1"_s});
}

void Desktop::press(const QStringList& keys) const
{
    xdotool(QStringList{u"key"_s, u"--delay"_s, u"50"_s} + keys);
}

void Desktop::type(const QString& text) const
{
    xdotool({u"type"_s, u"--delay"_s, u"10"_s, text});
}

} // namespace desktop
