#pragma once

#include <QObject>

namespace platform {

/// Tells when a tray for status items comes to the desktop: a StatusNotifierWatcher on the
/// session's message bus, as KDE and GNOME's extension have it. An older tray (XEmbed) is noticed
/// by the toolkit itself. Without a session bus nothing happens. Main thread.
class TrayWatch final : public QObject {
    Q_OBJECT

public:
    TrayWatch();

Q_SIGNALS:
    /// Not for a tray that is there already.
    void appeared();
};

/// To be called before anything else uses a message bus. Where the session has none, libdbus would
/// start one by a program (dbus-launch) and wait for it, holding up every thread; this program does
/// without.
void startNoSessionBus();

} // namespace platform
