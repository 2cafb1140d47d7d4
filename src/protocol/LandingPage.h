#pragma once

#include "protocol/HttpAnswer.h"

namespace ferrylane {

/// The page that a browser shows for a pairing link. Its button hands the link's address and key on
/// to the phone application; the page itself knows no secret.
[[nodiscard]] HttpAnswer landingPage();

} // namespace ferrylane
