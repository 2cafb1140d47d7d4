#pragma once

#include "bench/LoopbackServer.h"

#include <QString>

namespace bench {

/// A phone, in a process of its own, that is always ready, reads every upload to its end, keeps
/// nothing of it and says that it has been stored. It takes as little of this computer's time as a
/// receiver can: a phone takes none.
class DrainingPhone {
public:
    /// Forks, see LoopbackServer.
    DrainingPhone();

    [[nodiscard]] QString baseURL() const;

private:
    LoopbackServer server_;
};

} // namespace bench
