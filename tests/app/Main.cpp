#include "app/widgets/Appearance.h"
#include "support/PrivateNetwork.h"

#include <QApplication>

#include <gtest/gtest.h>

#include <csignal>

// As the main() of the other test programs, but with windows, on a screen that is only in memory.
int main(int argc, char** argv)
{
    support::enterPrivateNetwork();
    std::signal(SIGPIPE, SIG_IGN);
    ::testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    ferrylane::useLightAppearance();
    return RUN_ALL_TESTS();
}
