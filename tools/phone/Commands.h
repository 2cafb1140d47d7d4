#pragma once

#include "phone/Arguments.h"

namespace ferrylane::phone {

/// Does what the command line asks for and prints the outcome. Throws Failure.
void run(const Arguments& arguments);

} // namespace ferrylane::phone
