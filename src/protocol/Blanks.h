#pragma once

#include <QByteArrayView>

namespace ferrylane {

/// Without the spaces and tabs at both ends: HTTP's optional white space (RFC 9110, section 5.6.3).
[[nodiscard]] inline QByteArrayView withoutOuterBlanks(QByteArrayView text)
{
    const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.isEmpty() && isBlank(text.front())) {
        text = text.sliced(1);
    }
    while (!text.isEmpty() && isBlank(text.back())) {
        text.chop(1);
    }
    return text;
}

} // namespace ferrylane
