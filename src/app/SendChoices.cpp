#include "app/SendChoices.h"

#include "core/NameOrder.h"

#include <QFileInfo>

#include <algorithm>

namespace ferrylane {

namespace {

bool sameName(const QString& a, const QString& b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

QList<FerrylanePairedTarget> offeredTargets(
    QList<FerrylanePairedTarget> targets, const QString& ownName)
{
    targets.removeIf(
        [&](const FerrylanePairedTarget& target) { return sameName(target.name, ownName); });
    std::stable_sort(targets.begin(), targets.end(),
        [order = NameOrder()](const FerrylanePairedTarget& a, const FerrylanePairedTarget& b) {
            return order(a.name, b.name);
        });
    return targets;
}

QStringList offeredNames(
    QStringList names, const QList<FerrylanePairedTarget>& offered, const QString& ownName)
{
    names.removeIf([&](const QString& name) {
        return sameName(name, ownName)
            || std::any_of(
                offered.begin(), offered.end(), [&](const FerrylanePairedTarget& target) {
                    return target.name.toLower() == name.toLower();
                });
    });
    std::stable_sort(names.begin(), names.end(), NameOrder());
    return names;
}

} // namespace

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

QStringList withoutFolders(const QStringList& paths)
{
    QStringList files = paths;
    files.removeIf([](const QString& path) { return QFileInfo(path).isDir(); });
    return files;
}

} // namespace ferrylane
