#include "platform/ThreadName.h"

#include <pthread.h>

namespace platform {

void setCurrentThreadName(const std::string& label)
{
    constexpr std::size_t longest = 15;
    // The labels differ at their end.
    const std::size_t start = label.size() > longest ? label.size() - longest : 0;
    pthread_setname_np(pthread_self(), label.c_str() + start);
}

} // namespace platform
