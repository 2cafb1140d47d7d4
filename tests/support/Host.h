#pragma once

#include "support/ChildProcess.h"
#include "support/PrivateAvahi.h"
#include "support/PrivateHome.h"

#include <memory>

namespace support {

/// What a program that has ended has left.
struct Outcome {
    int exitCode = -1;
    QByteArray output;
    QByteArray errors;
};

/// A computer of its own, as far as the network goes: network namespace, home folder, D-Bus system
/// bus and Avahi daemon. Everything in it ends with this object.
class Host {
public:
    /// Throws std::runtime_error where namespaces are not permitted.
    explicit Host(const QString& name);

    /// Joins the two by a cable: an interface "eth0" on each, up, without addresses.
    static void connect(const Host& one, const Host& other);

    /// Runs "ip ARGUMENT..." inside; throws std::runtime_error when it fails.
    void ip(const QString& arguments) const;
    /// Gives eth0 this address in place of another, with a default route.
    void setAddress(const QString& address) const;

    [[nodiscard]] Outcome run(const QString& program, const QStringList& arguments) const;
    /// Starts a program inside whose standard output goes to outputOf(`label`).
    void start(ChildProcess& process, const QString& label, const QString& program,
        const QStringList& arguments) const;
    [[nodiscard]] QByteArray outputOf(const QString& label) const;

    [[nodiscard]] const PrivateHome& home() const { return home_; }
    [[nodiscard]] PrivateAvahi& avahi() { return *avahi_; }

private:
    [[nodiscard]] Command inside(const QString& program, const QStringList& arguments) const;

    ChildProcess holder_; ///< keeps the network namespace
    PrivateHome home_;
    std::unique_ptr<PrivateAvahi> avahi_;
};

} // namespace support
