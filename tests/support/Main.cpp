#include "support/PrivateNetwork.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <csignal>

int main(int argc, char** argv)
{
    support::enterPrivateNetwork();
    // As in the program: a peer that closes is an error to handle, not the end of the process.
    std::signal(SIGPIPE, SIG_IGN);
    ::testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
