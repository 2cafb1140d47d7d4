#pragma once

namespace ferrylane::phone {

/// Makes the log, settings and keys of this process those of the played phone, in the folder
/// ferrylane-phone of the user's data folder, and not the ones of this computer. To be called
/// before other threads start: they read the environment.
void usePhoneFolders();

} // namespace ferrylane::phone
