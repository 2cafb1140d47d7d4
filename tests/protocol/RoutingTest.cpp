#include "protocol/Routing.h"

#include <gtest/gtest.h>

using namespace ferrylane;

namespace {

RequestHead head(const char* method, const char* target)
{
    RequestHead head;
    head.method = QString::fromUtf8(method);
    head.target = QString::fromUtf8(target);
    return head;
}

} // namespace

// The test vectors hold the routes and their limits.

TEST(Route, aTransferIdIsCountedInCharacters)
{
    // 16 user-perceived characters of two code points each.
    const QString clusters = QStringLiteral("e\u0301").repeated(16);
    for (const qsizetype missing : {0, 2}) {
        RequestHead upload = head("POST", "/secure-upload-v4");
        upload.chunked = true;
        upload.transferId = clusters.chopped(missing);
        upload.noncePrefix = QStringLiteral("AAECAwQFBgc");
        EXPECT_EQ(std::get<routes::Upload>(route(upload)).transfer.has_value(), missing == 0);
    }
}

TEST(Route, theLandingPageIsTheOneThatPhonesKnow)
{
    const Route page = route(head("GET", "/?flkey=abc"));
    const auto& answer = std::get<HttpAnswer>(page);
    EXPECT_EQ(answer.contentType, "text/html; charset=utf-8");
    EXPECT_EQ(answer.body.size(), 1326);
    EXPECT_TRUE(answer.body.startsWith("<!doctype html><meta name=viewport"));
    EXPECT_TRUE(answer.body.contains("location.href='ferrylane://receive?url='"));
    EXPECT_TRUE(answer.body.endsWith("};\n</script>"));
}
