#pragma once

#include "platform/QRCode.h"

#include <QString>

namespace ferrylane::phone {

/// The code for a terminal with light text on a dark ground or with colours: lines of half blocks,
/// two rows of modules each, drawn black on white by escape sequences, with its quiet zone.
[[nodiscard]] QString terminalText(const platform::QRCode& code);

} // namespace ferrylane::phone
