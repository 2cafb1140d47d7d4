#pragma once

#include <QLatin1StringView>

// Where the maker is to be found. Settled when the program is built; a distributor puts other
// addresses here.
namespace ferrylane::maker {

inline constexpr QLatin1StringView productPage{"https://www.tarrowby.example/ferrylane"};
inline constexpr QLatin1StringView privacyPage{"https://www.tarrowby.example/ferrylane/privacy"};
inline constexpr QLatin1StringView supportPage{"https://www.tarrowby.example/ferrylane/support"};
inline constexpr QLatin1StringView supportAddress{"support@tarrowby.example"};

} // namespace ferrylane::maker
