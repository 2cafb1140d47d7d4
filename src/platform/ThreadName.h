#pragma once

#include <string>

#include <pthread.h>

namespace platform {

/// Names the calling thread for debuggers and `top -H`: the last 15 characters of `label`, as much
/// as the system keeps. (The labels differ at their end.)
inline void setCurrentThreadName(const std::string& label)
{
    constexpr std::size_t longest = 15;
    const std::size_t start = label.size() > longest ? label.size() - longest : 0;
    pthread_setname_np(pthread_self(), label.c_str() + start);
}

} // namespace platform
