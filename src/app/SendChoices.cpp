#include "app/SendChoices.h"

#include "app/KnownDevices.h"

namespace ferrylane {

QList<SendChoice> sendChoices(const QList<FerrylanePairedTarget>& paired,
    const QStringList& visibleNames, const QString& ownName)
{
    QList<SendChoice> choices;
    const auto targets = offeredTargets(paired, ownName);
    for (const FerrylanePairedTarget& target : targets) {
        choices.append(
            {SendChoice::Kind::sendTo, QStringLiteral("Send to ") + target.name, target});
    }
    for (const QString& name : offeredNames(visibleNames, targets, ownName)) {
        choices.append({SendChoice::Kind::pair, QStringLiteral("Pair ") + name, {}});
    }
    choices.append({SendChoice::Kind::pairByCode, QStringLiteral("Pair device with QR"), {}});
    choices.append({SendChoice::Kind::cancel, QStringLiteral("Cancel"), {}});
    return choices;
}

QString sendQuestionText(qsizetype fileCount)
{
    return QStringLiteral("%1 file%2 selected. Choose a paired device, or pair a visible one.")
        .arg(QString::number(fileCount), fileCount == 1 ? QString() : QStringLiteral("s"));
}

platform::FilePaths withoutFolders(const platform::FilePaths& paths)
{
    platform::FilePaths files = paths;
    files.removeIf([](const platform::FilePath& path) { return path.isFolder(); });
    return files;
}

} // namespace ferrylane
