#include "platform/linux/ShellAssignments.h"

#include <QList>

namespace platform {

namespace {

/// Takes quotes and escapes off a value, one character at a time.
class Unquoter {
public:
    void take(char character)
    {
        if (escaped_) {
            takeEscaped(character);
        } else if (character == '\\' && quote_ != '\'') {
            escaped_ = true;
        } else if (character == quote_) {
            quote_ = none;
        } else if (quote_ == none && (character == '"' || character == '\'')) {
            quote_ = character;
        } else {
            result_.append(character);
        }
    }

    [[nodiscard]] std::optional<QByteArray> result() const
    {
        if (quote_ != none || escaped_) return std::nullopt;
        return result_;
    }

private:
    void takeEscaped(char character)
    {
        // Within double quotes a backslash before any other character stands for itself.
        if (quote_ == '"' && !QByteArrayView("\"\\$`").contains(character)) result_.append('\\');
        result_.append(character);
        escaped_ = false;
    }

    static constexpr char none = '\0';

    QByteArray result_;
    char quote_ = none;
    bool escaped_ = false;
};

} // namespace

QByteArray lastAssignment(QByteArrayView text, QByteArrayView name)
{
    const QByteArray start = name.toByteArray() + '=';
    QByteArray value;
    for (const QByteArray& line : text.toByteArray().split('\n')) {
        const QByteArray trimmed = line.trimmed();
        if (trimmed.startsWith(start)) value = trimmed.sliced(start.size()).trimmed();
    }
    return value;
}

std::optional<QByteArray> unquoted(QByteArrayView value)
{
    Unquoter unquoter;
    for (const char character : value) {
        unquoter.take(character);
    }
    return unquoter.result();
}

} // namespace platform
