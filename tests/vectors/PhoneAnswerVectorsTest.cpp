#include "protocol/HttpAnswer.h"
#include "support/QtPrinting.h"
#include "support/TestVectors.h"

#include <gtest/gtest.h>

using namespace ferrylane;
using namespace Qt::StringLiterals;
using namespace support;

TEST(PhoneAnswerVectors, areReadAsTheyShould)
{
    for (const QJsonValue row : vectorRows(u"phone-answers.json"_s)) {
        SCOPED_TRACE(vectorTrace(row));
        const auto answer = parsePhoneResponse(platform::bytesOf(vectorBytes(row[u"answer"])));
        EXPECT_EQ(answer ? answer->status : -1, row[u"status"].toInt(-1));
        if (!answer) continue;
        EXPECT_EQ(answer->body, row[u"text"].toString());
        EXPECT_EQ(answer->isSuccess(), row[u"stored"].toBool());
    }
}
