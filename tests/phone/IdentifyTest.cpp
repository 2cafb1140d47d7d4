#include "phone/Identify.h"

#include "protocol/IdentifyHandshake.h"
#include "support/UploadStream.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace ferrylane::phone;

namespace {

const QString challenge = QStringLiteral("AAECAwQFBgcICQoLDA0ODw");

HttpResponse answerFor(const QString& name)
{
    const auto bytes = ferrylane::identifyResponse(support::testKey(), challenge, name);
    return std::get<HttpResponse>(parseHttpResponse(platform::bytesOf(*bytes)));
}

/// The answer with one character of a header changed.
HttpResponse forged(const QByteArray& headerName)
{
    HttpResponse answer = answerFor(QStringLiteral("Office PC"));
    for (auto& [name, value] : answer.headers) {
        if (name == headerName) value[0] = value[0] == 'A' ? 'B' : 'A';
    }
    return answer;
}

} // namespace

TEST(Identify, believesANameWithBothProofs)
{
    for (const QString& name : {u"Office PC"_s, u"K\u00FCche \u4E2D|%"_s}) {
        EXPECT_EQ(provenName(support::testKey(), challenge, answerFor(name)), name);
    }
}

TEST(Identify, believesNothingElse)
{
    const QString name = u"Office PC"_s;
    EXPECT_FALSE(provenName(platform::SecretKey::random(), challenge, answerFor(name)));
    EXPECT_FALSE(provenName(support::testKey(), u"BBECAwQFBgcICQoLDA0ODw"_s, answerFor(name)));
    for (const char* const header :
        {"X-Ferrylane-Proof", "X-Ferrylane-Name", "X-Ferrylane-Name-Proof"}) {
        EXPECT_FALSE(provenName(support::testKey(), challenge, forged(header))) << header;
    }
    HttpResponse refusal = answerFor(name);
    refusal.status = 400;
    EXPECT_FALSE(provenName(support::testKey(), challenge, refusal));
    HttpResponse empty = answerFor(name);
    empty.headers.clear();
    EXPECT_FALSE(provenName(support::testKey(), challenge, empty));
}
