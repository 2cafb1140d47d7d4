#include "fuzz/Target.h"
#include "protocol/HttpAnswer.h"

using namespace ferrylane;

namespace {

QByteArray written(const PhoneResponse& response)
{
    return "HTTP/1.1 " + QByteArray::number(response.status)
        + " Reason\r\nContent-Type: text/plain\r\n\r\n" + response.body.toUtf8();
}

/// What a phone answers is what is read.
void checkReading(const PhoneResponse& response)
{
    const auto read = parsePhoneResponse(platform::bytesOf(written(response)));
    require(read && read->status == response.status && read->body == response.body);
    require(read->isSuccess() == (response.status / 100 == 2));
}

} // namespace

/// The first two bytes are a status, and all of them an answer as it comes.
void check(const QByteArray& input)
{
    if (const auto response = parsePhoneResponse(platform::bytesOf(input))) {
        require(input.isValidUtf8());
        require(response->body.size() <= input.size());
        require(response->body == response->body.trimmed());
        checkReading(*response);
    }
    if (input.size() < 2) return;
    const int status = static_cast<quint8>(input[0]) * 256 + static_cast<quint8>(input[1]);
    checkReading({status, QString::fromUtf8(input.sliced(2)).trimmed()});
}
