#include "phone/Arguments.h"
#include "phone/Commands.h"
#include "phone/Failure.h"

#include <QCoreApplication>

#include <cstdio>

namespace {

namespace phone = ferrylane::phone;

void runCommandLine(const QStringList& commandLine)
{
    const auto parsed = phone::parseArguments(commandLine);
    if (const auto* const help = std::get_if<phone::Help>(&parsed)) {
        std::fputs(help->text.toUtf8().constData(), stdout);
        return;
    }
    const platform::SteadyClock clock;
    const auto network = platform::TcpNetwork::create("ferrylane.phone");
    phone::run(std::get<phone::Arguments>(parsed), *network, clock);
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    try {
        runCommandLine(QCoreApplication::arguments());
    } catch (const phone::Failure& failure) {
        std::fprintf(stderr, "ferrylane-phone: %s\n", failure.what());
        return static_cast<int>(failure.code());
    }
    return static_cast<int>(phone::ExitCode::ok);
}
