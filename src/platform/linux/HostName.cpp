#include "platform/HostName.h"

#include "platform/Files.h"
#include "platform/linux/MachineInfo.h"
#include "platform/linux/ShellAssignments.h"

#include <array>

#include <unistd.h>

namespace platform {

namespace {

constexpr qint64 maximumMachineInfoBytes = 65536;

QString hostName()
{
    std::array<char, 256> name{};
    // One byte less than there is: a name that is cut short may come without its NUL.
    if (::gethostname(name.data(), name.size() - 1) != 0) return {};
    return QString::fromUtf8(name.data());
}

} // namespace

QString prettyHostNameIn(QByteArrayView machineInfo)
{
    const auto value = unquoted(lastAssignment(machineInfo, "PRETTY_HOSTNAME"));
    return value && value->isValidUtf8() ? QString::fromUtf8(*value).trimmed() : QString();
}

QString firstLabelOf(const QString& hostName)
{
    return hostName.section(u'.', 0, 0);
}

QString localizedHostName()
{
    const auto machineInfo = readFile(QStringLiteral("/etc/machine-info"), maximumMachineInfoBytes);
    const QString pretty = machineInfo ? prettyHostNameIn(*machineInfo) : QString();
    return pretty.isEmpty() ? firstLabelOf(hostName()) : pretty;
}

} // namespace platform
