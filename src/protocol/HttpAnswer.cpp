#include "protocol/HttpAnswer.h"

namespace ferrylane {

QByteArray HttpAnswer::toBytes() const
{
    QByteArray bytes("HTTP/1.1 ");
    bytes.append(status)
        .append("\r\nContent-Type: ")
        .append(contentType)
        .append("\r\nContent-Length: ")
        .append(QByteArray::number(body.size()))
        .append("\r\nCache-Control: no-store\r\nConnection: close\r\n\r\n")
        .append(body);
    return bytes;
}

} // namespace ferrylane
