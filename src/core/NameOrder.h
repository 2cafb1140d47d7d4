#pragma once

#include <QCollator>
#include <QString>

namespace ferrylane {

/// How lists of names are sorted for people: by the user's language, whatever the case of letters.
/// Names that differ in nothing else are equal, so sort stably. For one thread at a time.
class NameOrder {
public:
    NameOrder() { collator_.setCaseSensitivity(Qt::CaseInsensitive); }

    /// Whether `left` comes before `right`.
    [[nodiscard]] bool operator()(const QString& left, const QString& right) const
    {
        return collator_.compare(left, right) < 0;
    }

private:
    QCollator collator_;
};

} // namespace ferrylane
