#pragma once

namespace support {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define FERRYLANE_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define FERRYLANE_SANITIZED 1
#endif
#endif

/// Sanitizers multiply the time that everything takes.
#ifdef FERRYLANE_SANITIZED
inline constexpr bool isSanitized = true;
#else
inline constexpr bool isSanitized = false;
#endif

} // namespace support
