#pragma once

namespace platform {

/// Base of what is used, and destroyed, by way of a reference or pointer, and never copied.
class Interface {
public:
    Interface() = default;
    Interface(const Interface&) = delete;
    Interface& operator=(const Interface&) = delete;
    virtual ~Interface() = default;
};

} // namespace platform
