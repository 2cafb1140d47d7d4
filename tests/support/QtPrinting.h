#pragma once

#include <QByteArray>
#include <QString>

#include <ostream>

// GoogleTest finds these by their argument's namespace, which is the global one. Without them it
// prints every character as the two bytes that it is made of.

inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QByteArray& bytes, std::ostream* out)
{
    *out << '"' << bytes.toStdString() << '"';
}
