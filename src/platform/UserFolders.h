#pragma once

#include <QString>

namespace platform {

/// Folders of the current user by the XDG Base Directory conventions, read from the environment at
/// every call, without a slash at the end. Variables that are empty or hold a relative path count
/// as unset; without $HOME the user database tells the home folder. None is created here.
[[nodiscard]] QString userConfigFolder(); ///< $XDG_CONFIG_HOME, else ~/.config
[[nodiscard]] QString userDataFolder();   ///< $XDG_DATA_HOME, else ~/.local/share
[[nodiscard]] QString userStateFolder();  ///< $XDG_STATE_HOME, else ~/.local/state
/// XDG_DOWNLOAD_DIR of user-dirs.dirs in the config folder, else ~/Downloads. An entry that is the
/// home folder itself says, by the convention of that file, that there is none.
[[nodiscard]] QString userDownloadsFolder();

} // namespace platform
