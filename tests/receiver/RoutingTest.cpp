#include "receiver/Routing.h"

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

RequestHead uploadHead(const QString& id, const QString& prefix)
{
    RequestHead upload = head("POST", "/secure-upload-v4");
    upload.chunked = true;
    upload.transferId = id;
    upload.noncePrefix = prefix;
    return upload;
}

/// The status of the answer, or the kind of route.
QByteArray outcome(const Route& route)
{
    if (const auto* const answer = std::get_if<HttpAnswer>(&route)) {
        return answer->status.toByteArray();
    }
    if (std::holds_alternative<routes::Readiness>(route)) return "readiness";
    if (std::holds_alternative<routes::Identify>(route)) return "identify";
    return "upload";
}

} // namespace

TEST(Route, goesByMethodAndTargetExactly)
{
    const struct {
        const char* method;
        const char* target;
        const char* outcome;
    } rows[] = {
        {"GET", "/transfer-status", "readiness"},
        {"GET", "/transfer-status?x=1", "200 OK"},
        {"GET", "/transfer-status/", "200 OK"},
        {"GET", "/Transfer-Status", "200 OK"},
        {"get", "/transfer-status", "404 Not Found"},
        {"HEAD", "/transfer-status", "404 Not Found"},
        {"POST", "/transfer-status", "404 Not Found"},
        {"GET", "/secure-identify", "identify"},
        {"POST", "/secure-identify", "404 Not Found"},
        {"GET", "/", "200 OK"},
        {"GET", "/upload", "200 OK"},
        {"GET", "/secure-upload-v4", "200 OK"},
        {"GET", "*", "404 Not Found"},
        {"GET", "http://host/", "404 Not Found"},
        {"POST", "/upload", "426 Upgrade Required"},
        {"POST", "/secure-upload", "426 Upgrade Required"},
        {"POST", "/secure-upload-v2", "426 Upgrade Required"},
        {"POST", "/secure-upload-v3", "426 Upgrade Required"},
        {"POST", "/secure-upload-v3?x", "404 Not Found"},
        {"POST", "/secure-upload-v4", "404 Not Found"},
        {"POST", "/", "404 Not Found"},
        {"", "/", "404 Not Found"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(outcome(route(head(row.method, row.target))), row.outcome)
            << row.method << ' ' << row.target;
    }
}

TEST(Route, anUploadNeedsAnIdAndANoncePrefix)
{
    const QString id16(16, u'i');
    const QString prefix8 = QStringLiteral("AAECAwQFBgc");
    // 16 user-perceived characters of two code points each.
    const QString clusters = QStringLiteral("e\u0301").repeated(16);
    const struct {
        QString id;
        QString prefix;
        bool complete;
    } rows[] = {
        {id16, prefix8, true},
        {id16, QStringLiteral("AAECAwQFBgc="), true},
        {id16, QStringLiteral("__79_Pv6-fg"), true},
        {QString(15, u'i'), prefix8, false},
        {QString(128, u'i'), prefix8, true},
        {QString(129, u'i'), prefix8, false},
        {clusters, prefix8, true},
        {clusters.chopped(2), prefix8, false},
        {id16, QStringLiteral("AAECAwQFBg"), false},
        {id16, QStringLiteral("AAECAwQFBgcI"), false},
        {id16, QStringLiteral("not base64!"), false},
        {id16, QString(), false},
    };
    for (const auto& row : rows) {
        const Route upload = route(uploadHead(row.id, row.prefix));
        ASSERT_EQ(outcome(upload), "upload");
        EXPECT_EQ(std::get<routes::Upload>(upload).transfer.has_value(), row.complete)
            << row.id.toStdString() << ' ' << row.prefix.toStdString();
    }
    RequestHead bare = head("POST", "/secure-upload-v4");
    bare.chunked = true;
    EXPECT_FALSE(std::get<routes::Upload>(route(bare)).transfer);
}

TEST(Route, anUploadTakesOverWhatTheHeadSays)
{
    RequestHead upload = uploadHead(QString(16, u'i'), QStringLiteral("AAECAwQFBgc"));
    upload.fileName = QStringLiteral("photo.jpg");
    upload.declaredFileSize = 42;
    upload.senderName = QStringLiteral("Pixel 8");
    const Route result = route(upload);
    const auto& request = std::get<routes::Upload>(result);
    ASSERT_TRUE(request.transfer);
    EXPECT_EQ(request.transfer->id, QString(16, u'i'));
    EXPECT_EQ(request.transfer->fileName, QStringLiteral("photo.jpg"));
    EXPECT_EQ(request.transfer->fileSize, 42);
    EXPECT_EQ(request.transfer->noncePrefix[7], std::byte{7});
    EXPECT_EQ(request.senderName, QStringLiteral("Pixel 8"));
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
