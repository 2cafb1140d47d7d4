#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <optional>
#include <vector>

namespace bench {

struct Target {
    enum class Bound { atMost, atLeast, below };
    Bound bound;
    double limit;

    [[nodiscard]] bool isMetBy(double value) const;
    [[nodiscard]] QString text() const;
};

/// One measured value.
struct Figure {
    QString key; ///< its name in the JSON object
    QString label;
    double value;
    QString unit; ///< may be empty
    int decimals;
    std::optional<Target> target{};
};

/// What a benchmark has found, for people or for programs.
class Report {
public:
    explicit Report(const QString& subject) : subject_(subject) {}

    void beginSection(const QString& title);
    void add(const Figure& figure);

    [[nodiscard]] QString table() const;
    /// One line: all values by their keys, under "targets" what was to be reached.
    [[nodiscard]] QByteArray json() const;

private:
    struct Section {
        QString title;
        std::vector<Figure> figures;
    };

    QString subject_;
    std::vector<Section> sections_;
};

/// The processor's name and how many there are.
[[nodiscard]] QString machineDescription();

} // namespace bench
