#include "bench/Report.h"

#include <QFile>
#include <QJsonDocument>

#include <thread>

namespace bench {

namespace {

QString verdict(const Figure& figure)
{
    return figure.target->isMetBy(figure.value) ? QStringLiteral("ok") : QStringLiteral("missed");
}

QString row(const Figure& figure)
{
    const QString line = QStringLiteral("  %1%2 %3")
                             .arg(figure.label, -46)
                             .arg(figure.value, 10, 'f', figure.decimals)
                             .arg(figure.unit, -6);
    if (!figure.target) return line.trimmed().prepend(QStringLiteral("  "));
    return line + QStringLiteral("%1  %2").arg(figure.target->text(), -14).arg(verdict(figure));
}

QJsonObject jsonTarget(const Figure& figure)
{
    return {{QStringLiteral("target"), figure.target->text()},
        {QStringLiteral("met"), figure.target->isMetBy(figure.value)}};
}

} // namespace

bool Target::isMetBy(double value) const
{
    switch (bound) {
    case Bound::atMost:
        return value <= limit;
    case Bound::atLeast:
        return value >= limit;
    case Bound::below:
        return value < limit;
    }
    return false;
}

QString Target::text() const
{
    const QString number = QString::number(limit);
    switch (bound) {
    case Bound::atMost:
        return QStringLiteral("at most ") + number;
    case Bound::atLeast:
        return QStringLiteral("at least ") + number;
    case Bound::below:
        return QStringLiteral("below ") + number;
    }
    return {};
}

void Report::beginSection(const QString& title)
{
    sections_.push_back({title, {}});
}

void Report::add(const Figure& figure)
{
    sections_.back().figures.push_back(figure);
}

QString Report::table() const
{
    QString text = subject_ + QStringLiteral("; ") + machineDescription() + u'\n';
    for (const Section& section : sections_) {
        text += u'\n' + section.title + u'\n';
        for (const Figure& figure : section.figures) {
            text += row(figure) + u'\n';
        }
    }
    return text;
}

QByteArray Report::json() const
{
    QJsonObject targets;
    QJsonObject all{
        {QStringLiteral("subject"), subject_}, {QStringLiteral("machine"), machineDescription()}};
    for (const Section& section : sections_) {
        for (const Figure& figure : section.figures) {
            all.insert(figure.key, figure.value);
            if (figure.target) targets.insert(figure.key, jsonTarget(figure));
        }
    }
    all.insert(QStringLiteral("targets"), targets);
    return QJsonDocument(all).toJson(QJsonDocument::Compact) + '\n';
}

QString machineDescription()
{
    QString model = QStringLiteral("unknown processor");
    QFile file(QStringLiteral("/proc/cpuinfo"));
    if (file.open(QIODevice::ReadOnly)) {
        for (const QByteArray& line : file.readAll().split('\n')) {
            if (line.startsWith("model name")) {
                model = QString::fromUtf8(line.sliced(line.indexOf(':') + 1).trimmed());
            }
        }
    }
    return QStringLiteral("%1 x %2").arg(std::thread::hardware_concurrency()).arg(model);
}

} // namespace bench
