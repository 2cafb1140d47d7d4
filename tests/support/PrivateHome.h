#pragma once

#include "platform/SecretKey.h"
#include "support/TestFiles.h"

#include <QProcessEnvironment>
#include <QStringList>
#include <QTemporaryDir>

namespace support {

/// A home folder for programs under test, gone with this object. Knows where the program keeps its
/// files in it.
class PrivateHome {
public:
    [[nodiscard]] QString path() const { return dir_.path(); }
    /// With this home and no other trace of the user's session.
    [[nodiscard]] QProcessEnvironment environment() const;

    [[nodiscard]] QString keyFile() const;
    [[nodiscard]] QString logFile() const;
    [[nodiscard]] QString transferLogFile() const;
    [[nodiscard]] QString settingsFile() const;
    [[nodiscard]] QString receiveFolder() const;

    /// The key in the key file, which must be there.
    [[nodiscard]] platform::SecretKey key() const;
    [[nodiscard]] QString pairingLink() const;
    [[nodiscard]] QByteArray log() const { return contentOf(logFile()); }

    /// Paths, below the receive folder, of all files in it and its folders: those that have been
    /// received and, hidden, those that are not complete.
    [[nodiscard]] QStringList receivedFiles() const;
    [[nodiscard]] QStringList partialFiles() const;
    /// Paths of all files in the home folder, below it.
    [[nodiscard]] QStringList allFiles() const;

    /// A path of `name` in a folder that the program does not use.
    [[nodiscard]] QString ownFile(const QString& name) const;
    [[nodiscard]] QByteArray received(const QString& path) const;

    /// Paths of all files in a folder and those below, below it.
    [[nodiscard]] static QStringList filesBelow(const QString& folder);

private:
    QTemporaryDir dir_;
};

} // namespace support
