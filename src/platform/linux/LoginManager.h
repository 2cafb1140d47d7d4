#pragma once

#include <QString>

namespace platform {

// Where the login manager is on the system's message bus (org.freedesktop.login1(5)).
[[nodiscard]] inline QString loginService()
{
    return QStringLiteral("org.freedesktop.login1");
}

[[nodiscard]] inline QString loginPath()
{
    return QStringLiteral("/org/freedesktop/login1");
}

[[nodiscard]] inline QString loginInterface()
{
    return QStringLiteral("org.freedesktop.login1.Manager");
}

} // namespace platform
