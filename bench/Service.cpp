#include "bench/Service.h"

#include "support/TestFiles.h"

#include <stdexcept>

namespace bench {

namespace {

// What a user's session gives a program, whatever this one has been given.
constexpr rlim_t usualDescriptors = 1024;

} // namespace

Service::Service(const QString& program, const QString& receiveFolder) : program_(program, home_)
{
    support::writeFile(
        home_.settingsFile(), "[General]\nFerrylaneReceiveFolder=" + receiveFolder.toUtf8() + '\n');

    support::Scarcity scarcity;
    scarcity.descriptors = usualDescriptors;
    if (!program_.start(scarcity)) {
        throw std::runtime_error(program.toStdString() + " does not open its port");
    }
}

} // namespace bench
