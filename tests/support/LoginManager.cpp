#include "support/LoginManager.h"

#include "support/StartDaemon.h"
#include "support/TestFiles.h"
#include "support/Waiting.h"

#include <stdexcept>

namespace support {

namespace {

const QString service = QStringLiteral("org.freedesktop.login1");
const QString manager = service + QStringLiteral(".Manager");

} // namespace

void LoginManager::start()
{
    bus_.start();
    startDaemon(process_,
        {QStringLiteral("/usr/bin/python3"),
            {QStringLiteral("-um"), QStringLiteral("dbusmock"), QStringLiteral("--template"),
                QStringLiteral("logind")},
            bus_.environment(), file(QStringLiteral("log")), {}, {}},
        {});
    // It serves once it can be taught to tell of sleep.
    const bool isThere = waitUntil([&] {
        return send(QStringLiteral("org.freedesktop.DBus.Mock.AddMethod"),
            {QStringLiteral("string:") + manager, QStringLiteral("string:Sleep"),
                QStringLiteral("string:b"), QStringLiteral("string:"),
                QStringLiteral("string:self.EmitSignal('%1', 'PrepareForSleep', 'b', args)")
                    .arg(manager)});
    });
    if (!isThere) throw std::runtime_error("no login manager");
}

void LoginManager::kill()
{
    bus_.kill();
    process_.kill();
}

void LoginManager::prepareForSleep(bool isAboutToSleep)
{
    const QString value = isAboutToSleep ? QStringLiteral("true") : QStringLiteral("false");
    if (!send(manager + QStringLiteral(".Sleep"), {QStringLiteral("boolean:") + value})) {
        throw std::runtime_error("the login manager does not answer");
    }
}

QByteArray LoginManager::inhibitors()
{
    if (!send(manager + QStringLiteral(".ListInhibitors"), {})) {
        throw std::runtime_error("the login manager does not answer");
    }
    return contentOf(file(QStringLiteral("reply")));
}

bool LoginManager::send(const QString& method, const QStringList& arguments)
{
    ChildProcess program;
    program.start({QStringLiteral("/usr/bin/dbus-send"),
        QStringList{QStringLiteral("--bus=") + busAddress(), QStringLiteral("--print-reply"),
            QStringLiteral("--dest=") + service, QStringLiteral("/org/freedesktop/login1"), method}
            + arguments,
        bus_.environment(), file(QStringLiteral("reply")), file(QStringLiteral("errors")), {}});
    return program.waitForEnd(patience) == 0;
}

} // namespace support
