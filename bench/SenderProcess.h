#pragma once

#include "bench/SendCost.h"
#include "support/PrivateHome.h"

#include <QProcess>

namespace bench {

/// The name of the option, followed by the phone's address, with which a benchmark starts itself to
/// play the sender (playSender()).
inline constexpr const char* senderRoleOption = "play-sender-to";

/// A FerrylaneV4Sender in a process of its own, with a private home: this program, started again.
/// It runs as long as this object.
class SenderProcess {
public:
    /// `phone`: the base URL of the phone that everything is sent to.
    explicit SenderProcess(const QString& phone);
    ~SenderProcess();
    SenderProcess(const SenderProcess&) = delete;
    SenderProcess& operator=(const SenderProcess&) = delete;

    /// Sends a file, or all files of a folder by their names' order. Throws std::runtime_error when
    /// that fails; the process then has told why, and has ended.
    [[nodiscard]] SendCost send(const QString& path);

private:
    support::PrivateHome home_;
    QProcess process_;
};

} // namespace bench
