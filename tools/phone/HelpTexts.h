#pragma once

#include <QString>

namespace ferrylane::phone {

[[nodiscard]] QString generalHelp();
[[nodiscard]] QString identifyHelp();
[[nodiscard]] QString uploadHelp();

} // namespace ferrylane::phone
