#include "phone/Identify.h"

#include "protocol/IdentifyHandshake.h"
#include "support/UploadStream.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace ferrylane::phone;

namespace {

const QString challenge = QStringLiteral("AAECAwQFBgcICQoLDA0ODw");

QByteArray answerFor(const QString& name)
{
    return *ferrylane::identifyResponse(support::testKey(), challenge, name);
}

std::optional<QString> proven(const QByteArray& answer)
{
    return provenName(support::testKey(), challenge, answer);
}

} // namespace

TEST(Identify, believesANameWithBothProofs)
{
    for (const QString& name : {u"Office PC"_s, u"K\u00FCche \u4E2D|%"_s}) {
        EXPECT_EQ(proven(answerFor(name)), name);
    }
    EXPECT_EQ(proven(answerFor(u"a"_s).replace("X-Ferrylane-Name: ", "x-ferrylane-NAME:")), u"a"_s);
}

TEST(Identify, believesNothingElse)
{
    const QByteArray answer = answerFor(u"Office PC"_s);
    EXPECT_FALSE(provenName(platform::SecretKey::random(), challenge, answer));
    EXPECT_FALSE(provenName(support::testKey(), u"BBECAwQFBgcICQoLDA0ODw"_s, answer));
    for (const QByteArray header :
        {"X-Ferrylane-Proof: ", "X-Ferrylane-Name: ", "X-Ferrylane-Name-Proof: "}) {
        QByteArray forged = answer;
        char& first = forged[forged.indexOf(header) + header.size()];
        first = first == 'A' ? 'B' : 'A';
        EXPECT_FALSE(proven(forged)) << header.constData();
        EXPECT_FALSE(proven(QByteArray(answer).replace(header, "X-Other: ")));
    }
    EXPECT_FALSE(proven(QByteArray(answer).replace("200 OK", "400 Bad Request")));
    EXPECT_FALSE(proven("SSH-2.0-OpenSSH\r\n\r\n"));
}
