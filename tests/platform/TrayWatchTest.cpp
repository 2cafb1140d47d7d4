#include "platform/TrayWatch.h"

#include "support/EventLoop.h"
#include "support/PrivateBus.h"

#include <gtest/gtest.h>

#include <QDBusConnection>

using namespace Qt::StringLiterals;

TEST(TrayWatchTest, tellsOfATrayEachTimeThatOneComes)
{
    support::PrivateBus bus;
    bus.start();
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus.address().toLocal8Bit());
    int appearances = 0;
    const platform::TrayWatch watch;
    QObject::connect(&watch, &platform::TrayWatch::appeared, [&] { ++appearances; });
    const QString tray = u"org.kde.StatusNotifierWatcher"_s;
    for (int i = 1; i <= 2; ++i) {
        QDBusConnection desktop = QDBusConnection::connectToBus(bus.address(), u"desktop"_s);
        ASSERT_TRUE(desktop.registerService(tray));
        EXPECT_TRUE(support::processEventsUntil([&] { return appearances == i; }));
        EXPECT_TRUE(desktop.unregisterService(tray));
        QDBusConnection::disconnectFromBus(u"desktop"_s);
    }
}
