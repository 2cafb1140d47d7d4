#pragma once

#include <QString>

namespace ferrylane::phone {

[[nodiscard]] QString generalHelp();
[[nodiscard]] QString identifyHelp();
[[nodiscard]] QString uploadHelp();
[[nodiscard]] QString receiveHelp();
[[nodiscard]] QString discoverHelp();

} // namespace ferrylane::phone
