#pragma once

#include <functional>
#include <vector>

#include <sys/syscall.h>

namespace support {

/// The call behind rename(3): newer architectures have only the one with folder descriptors.
#ifdef SYS_rename
constexpr int plainRename = SYS_rename;
#else
constexpr int plainRename = SYS_renameat;
#endif

/// A system call that is to fail, and the error number it fails with.
struct SystemCallFailure {
    int call;  ///< a number of <sys/syscall.h>
    int error; ///< of <cerrno>
};

/// Runs `action` on a thread of its own, on which these system calls do nothing but fail (by a
/// seccomp filter, which needs no privileges and goes with the thread), and waits for it. renameat2
/// fails only where it is given flags. False, without running it, when the system lets nobody
/// filter.
[[nodiscard]] bool runWithFailures(
    const std::vector<SystemCallFailure>& failures, const std::function<void()>& action);

} // namespace support
