#include "fuzz/Require.h"
#include "protocol/PhoneResponse.h"

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
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    if (const auto response = parsePhoneResponse(platform::bytesOf(bytes))) {
        require(bytes.isValidUtf8());
        require(response->body.size() <= bytes.size());
        require(response->body == response->body.trimmed());
        checkReading(*response);
    }
    if (size < 2) return 0;
    checkReading({data[0] * 256 + data[1], QString::fromUtf8(bytes.sliced(2)).trimmed()});
    return 0;
}
