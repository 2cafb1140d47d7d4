#pragma once

#include <functional>
#include <memory>

namespace platform {

class TrayWatch;

/// Tells when a tray for status items has come to the desktop: a StatusNotifierWatcher on the
/// session's message bus, as KDE and GNOME's extension have it. An older tray (XEmbed) is noticed
/// by the toolkit itself. Without a session bus nothing happens.
class TrayNotices {
public:
    /// `onAppeared` is called on the event loop of the thread that makes this, the main thread, not
    /// for a tray that is there already. It must not destroy this.
    explicit TrayNotices(std::function<void()> onAppeared);
    ~TrayNotices();
    TrayNotices(const TrayNotices&) = delete;
    TrayNotices& operator=(const TrayNotices&) = delete;

private:
    std::unique_ptr<TrayWatch> watch_;
};

} // namespace platform
