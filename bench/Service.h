#pragma once

#include "bench/Process.h"
#include "support/PrivateHome.h"
#include "support/ProgramUnderTest.h"

namespace bench {

/// The real program in a process of its own, in a private home, with the receive folder of one's
/// choice. It runs as long as this object.
class Service {
public:
    /// Returns once the port is open. Throws std::runtime_error when it does not open.
    Service(const QString& program, const QString& receiveFolder);

    [[nodiscard]] Process process() const { return Process(program_.processId()); }
    [[nodiscard]] platform::SecretKey key() const { return home_.key(); }

private:
    support::PrivateHome home_;
    support::ProgramUnderTest program_;
};

} // namespace bench
