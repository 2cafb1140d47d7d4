#pragma once

#include <QByteArrayView>
#include <QCollator>
#include <QString>

#include <optional>

namespace ferrylane {

// Lengths that people see are in characters as they see them: extended grapheme clusters (Unicode
// Standard Annex 29). An emoji of several code points or a letter with accents is one.

/// The bytes read as UTF-8 (RFC 3629: no overlong forms, no surrogates), every one of them: unlike
/// Qt's own reading a byte order mark at the start is a character like any other. None when they
/// are not UTF-8.
[[nodiscard]] std::optional<QString> decodeUtf8(QByteArrayView bytes);

[[nodiscard]] qsizetype characterCount(QStringView text);

/// Whether there are more than `count` characters.
[[nodiscard]] bool longerThan(QStringView text, qsizetype count);

/// The first `count` characters, or all when there are fewer.
[[nodiscard]] QString firstCharacters(const QString& text, qsizetype count);

/// The text on one line, in the order in which it stands: line breaks and other control characters
/// (C0, DEL, C1, U+2028 and U+2029) and those that turn the direction of writing (U+202A to U+202E,
/// U+2066 to U+2069) become \n, \r, \t or, with the code point in hexadecimal, \u{1B}. A backslash
/// stays as it is: the result is for people to read, not to be turned back.
[[nodiscard]] QString onOneLine(const QString& text);

// What others say, a peer's names and answers among it, for people to read: on one line, and no
// longer than it helps. What is cut off at the end leaves an ellipsis. However long the text, the
// work is that of the limit.

/// Most characters of a text in a window, and of a line in the log.
constexpr qsizetype maximumWindowCharacters = 300;
constexpr qsizetype maximumLogCharacters = 1000;

[[nodiscard]] QString textForWindow(const QString& text);
[[nodiscard]] QString textForLog(const QString& text);

/// A size in decimal units, as file managers show it: "1 byte", "12 bytes", "1.2 MB". Below 0,
/// which a damaged file may say, it is none.
[[nodiscard]] QString fileSizeText(qint64 bytes);

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
