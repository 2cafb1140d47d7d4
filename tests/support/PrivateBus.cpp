#include "support/PrivateBus.h"

#include "support/StartDaemon.h"
#include "support/TestFiles.h"

namespace support {

namespace {

// Lets everybody who can open its socket do everything, and starts no services.
constexpr auto configuration = R"(<busconfig>
  <type>session</type>
  <listen>%1</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

} // namespace

void PrivateBus::start()
{
    const QString configurationFile = file(QStringLiteral("bus.conf"));
    writeFile(configurationFile, QString::fromLatin1(configuration).arg(address()).toUtf8());
    startDaemon(bus_,
        {QStringLiteral("/usr/bin/dbus-daemon"),
            {QStringLiteral("--config-file=") + configurationFile, QStringLiteral("--nofork"),
                QStringLiteral("--nopidfile"), QStringLiteral("--print-address=1")},
            environment(), file(QStringLiteral("bus.log")), file(QStringLiteral("bus-errors.log")),
            {}},
        "unix:");
}

QString PrivateBus::address() const
{
    return QStringLiteral("unix:path=") + file(QStringLiteral("bus"));
}

QProcessEnvironment PrivateBus::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), address());
    return environment;
}

} // namespace support
