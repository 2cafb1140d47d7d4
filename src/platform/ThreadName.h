#pragma once

#include <string>

namespace platform {

/// Names the calling thread for debuggers and `top -H`: the last 15 characters of `label`, as much
/// as the system keeps.
void setCurrentThreadName(const std::string& label);

} // namespace platform
