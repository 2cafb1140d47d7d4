#pragma once

#include "platform/Files.h"

#include <QString>

#include <system_error>

namespace ferrylane {

/// The folder of the program's own data: key, paired phones and transfer log. Not created here.
[[nodiscard]] QString applicationSupportFolder();

/// The folder of the log file. Not created here.
[[nodiscard]] QString logFolder();

/// The folder for received files: the one that the user has chosen, else the folder Ferrylane among
/// the user's downloads. It is created when missing; when that fails, it is returned all the same.
[[nodiscard]] QString receiveDir();

// The program's own files. They and their folders are for their owner alone from the start; what
// somebody has opened to others is closed at the next start.

/// Makes a folder of the program's own, with its parents, and closes it and the files in it to
/// others.
[[nodiscard]] std::error_code prepareOwnFolder(const QString& folder);

/// New content for an own file.
[[nodiscard]] platform::Replacement ownReplacement(const QString& path, platform::ByteView content);

/// Logs what a file that has been written lacks, if anything.
void logWeaknesses(const QString& path, const platform::WriteResult& result);

/// Makes a folder, and the file in it with this content; what the file lacks then is logged. The
/// error is that of a file that could not be written: the old content stands.
[[nodiscard]] std::error_code writeOwnFile(const QString& path, platform::ByteView content);

/// Gives a file that cannot be read or understood another name beside it, "NAME.damaged-DATE",
/// never one that is taken, and logs that: what it holds may be worth more than what will be
/// written in its place, so where this fails nothing should be.
[[nodiscard]] std::error_code setAside(const QString& path);
/// Removes what setAside() has kept of this file.
void removeSetAside(const QString& path);

} // namespace ferrylane
