#include "support/SystemCallFailure.h"

#include <cstddef>
#include <cstdint>
#include <thread>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>

namespace support {

namespace {

sock_filter statement(unsigned code, std::uint32_t value)
{
    return {static_cast<std::uint16_t>(code), 0, 0, value};
}

/// Skips `count` statements unless the loaded value is `value`.
sock_filter unlessEqualSkip(std::uint32_t value, std::uint8_t count)
{
    return {BPF_JMP | BPF_JEQ | BPF_K, 0, count, value};
}

/// Skips `count` statements if the loaded value is `value`.
sock_filter ifEqualSkip(std::uint32_t value, std::uint8_t count)
{
    return {BPF_JMP | BPF_JEQ | BPF_K, count, 0, value};
}

std::vector<sock_filter> filterFor(const std::vector<SystemCallFailure>& failures)
{
    constexpr unsigned load = BPF_LD | BPF_W | BPF_ABS;
    constexpr unsigned answer = BPF_RET | BPF_K;
    constexpr std::uint32_t renameFlags
        = offsetof(seccomp_data, args) + 4 * sizeof(std::uint64_t); // its low half: little-endian
    std::vector<sock_filter> filter;
    for (const SystemCallFailure& failure : failures) {
        const auto error = statement(
            answer, SECCOMP_RET_ERRNO | (static_cast<std::uint32_t>(failure.error) & 0xFFFFU));
        filter.push_back(statement(load, offsetof(seccomp_data, nr)));
        if (failure.call == SYS_renameat2) {
            // Some architectures have no other rename: the plain one must still work.
            filter.push_back(unlessEqualSkip(static_cast<std::uint32_t>(failure.call), 3));
            filter.push_back(statement(load, renameFlags));
            filter.push_back(ifEqualSkip(0, 1));
        } else {
            filter.push_back(unlessEqualSkip(static_cast<std::uint32_t>(failure.call), 1));
        }
        filter.push_back(error);
    }
    filter.push_back(statement(answer, SECCOMP_RET_ALLOW));
    return filter;
}

bool filterThisThread(const std::vector<SystemCallFailure>& failures)
{
    std::vector<sock_filter> filter = filterFor(failures);
    const sock_fprog program{static_cast<unsigned short>(filter.size()), filter.data()};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0
        && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program, 0, 0) == 0;
}

bool runFiltered(
    const std::vector<SystemCallFailure>& failures, const std::function<void()>& action)
{
    bool filtered = false;
    std::thread([&] {
        filtered = filterThisThread(failures);
        if (filtered) action();
    }).join();
    return filtered;
}

} // namespace

bool runWithFailures(
    const std::vector<SystemCallFailure>& failures, const std::function<void()>& action)
{
    // A sanitizer that meets a type for the first time writes into a pipe of its own, and where
    // that fails it ends the process with 0, which looks like success: so this meets them before.
    static const bool canFilter = runFiltered({}, [] {});
    return canFilter && runFiltered(failures, action);
}

} // namespace support
