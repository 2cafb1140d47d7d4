#include "sender/FerrylaneV4Sender.h"

#include "core/Encodings.h"
#include "support/EventLoop.h"
#include "support/FakePhone.h"
#include "support/PrivateUserFolders.h"
#include "support/Sanitizers.h"
#include "support/UploadStream.h"
#include "support/Waiting.h"

#include <QFile>

#include <gtest/gtest.h>

#include <chrono>

#include <cstring>

#include <dlfcn.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

/// In place of the system's: for one name no server answers.
int getaddrinfo(const char* node, const char* service, const addrinfo* hints, addrinfo** result)
{
    const bool isNumeric = hints && (hints->ai_flags & AI_NUMERICHOST) != 0;
    if (!isNumeric && node && std::strcmp(node, "nobody.test") == 0) {
        std::this_thread::sleep_for(std::chrono::seconds(3));
        return EAI_AGAIN;
    }
    static const auto system
        = reinterpret_cast<decltype(&getaddrinfo)>(dlsym(RTLD_NEXT, "getaddrinfo"));
    return system(node, service, hints, result);
}

using namespace ferrylane;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using support::FakePhone;
using support::httpAnswer;
using Upload = FakePhone::Upload;

namespace {

const QByteArray ready = httpAnswer("200 OK", "READY");
const QByteArray busy = httpAnswer("409 Conflict", "BUSY");

/// Reads all of an upload, then answers.
FakePhone::Part answering(const QByteArray& answer)
{
    return [answer](Upload& upload) {
        static_cast<void>(upload.body());
        upload.answer(answer);
    };
}

/// How long a cancelled wait may still take; it would take much longer by itself.
constexpr auto promptness = support::isSanitized ? 1500ms : 250ms;

const FakePhone::Part takeFile = answering(httpAnswer("200 OK", "OK SHA256"));

class FerrylaneV4SenderTest : public ::testing::Test {
protected:
    FerrylaneV4SenderTest() { makeSender({2s, 300ms, 20ms, 10s}); }

    void makeSender(const SendTimes& times)
    {
        sender_ = std::make_unique<FerrylaneV4Sender>(u"my computer"_s, times);
        QObject::connect(sender_.get(), &FerrylaneV4Sender::waiting, [this] { ++waits_; });
        QObject::connect(sender_.get(), &FerrylaneV4Sender::progressed,
            [this](const auto& progress) { progress_.push_back(progress); });
        QObject::connect(sender_.get(), &FerrylaneV4Sender::completed,
            [this](const auto& result) { result_ = result; });
    }

    [[nodiscard]] static FerrylanePairedTarget target(const QString& baseURL)
    {
        return {u"Pixel 8"_s, baseURL, base64URLEncode(support::testKey().bytes())};
    }

    void start(const platform::FilePaths& files, const FerrylanePairedTarget& to)
    {
        result_.reset();
        sender_->send(files, to);
    }

    /// "3" for three files sent, else code and text of the error.
    [[nodiscard]] QString outcome()
    {
        if (!support::processEventsUntil([this] { return result_.has_value(); })) return {};
        if (const int* const count = std::get_if<int>(&*result_)) return QString::number(*count);
        const auto& error = std::get<SendError>(*result_);
        return u"%1 %2"_s.arg(error.code()).arg(error.description());
    }

    [[nodiscard]] QString send(const platform::FilePaths& files, const FerrylanePairedTarget& to)
    {
        start(files, to);
        return outcome();
    }

    support::PrivateUserFolders folders_;
    platform::SteadyClock clock_;
    std::unique_ptr<FerrylaneV4Sender> sender_;
    std::optional<FerrylaneV4Sender::Result> result_;
    std::vector<FerrylaneV4Sender::Progress> progress_;
    int waits_ = 0;
};

/// A port of 127.0.0.1 whose queue of connections is full: connecting takes for ever.
class FullPort {
public:
    FullPort()
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof(address);
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        EXPECT_EQ(bind(listener_, generic, length) + listen(listener_, 0)
                + getsockname(listener_, generic, &length),
            0);
        port_ = ntohs(address.sin_port);
        clients_.emplace_back(port_);
    }
    ~FullPort() { close(listener_); }
    FullPort(const FullPort&) = delete;
    FullPort& operator=(const FullPort&) = delete;

    [[nodiscard]] QString baseURL() const { return u"http://127.0.0.1:%1"_s.arg(port_); }

private:
    int listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    std::uint16_t port_ = 0;
    std::vector<support::TcpClient> clients_;
};

} // namespace

TEST_F(FerrylaneV4SenderTest, sendsFilesInOrderAndTellsOfThem)
{
    std::vector<QByteArray> bodies;
    std::atomic<bool> isFirstTold = false;
    FakePhone phone([&](Upload& upload) {
        bodies.push_back(upload.body());
        EXPECT_TRUE(bodies.size() < 2 || support::waitUntil([&] { return isFirstTold.load(); }));
        upload.answer(httpAnswer("200 OK", "OK SHA256"));
    });
    QObject::connect(sender_.get(), &FerrylaneV4Sender::progressed, [&] { isFirstTold = true; });
    const QByteArray content = support::testContent(2 * 1048576 + 1);
    const platform::FilePaths files{
        folders_.file(u"a b.bin"_s, content), folders_.file(u"empty"_s, {})};
    EXPECT_EQ(send(files, target(phone.baseURL())), u"2"_s);

    ASSERT_EQ(bodies.size(), 2U);
    EXPECT_GT(bodies[0].size(), content.size());
    // The empty file is a final record of 56 bytes and the last chunk.
    EXPECT_EQ(bodies[1].size(), 4 + 56 + 2 + 5);
    const auto heads = phone.heads();
    ASSERT_EQ(heads.size(), 4U); // each file is preceded by a question
    EXPECT_TRUE(heads[0].startsWith("GET /transfer-status HTTP/1.1\r\n")) << heads[0].constData();
    EXPECT_TRUE(heads[1].contains("\r\nX-Filename: a%20b.bin\r\n"));
    EXPECT_TRUE(heads[1].contains("\r\nX-Ferrylane-Sender-Name: my%20computer\r\n"));

    EXPECT_EQ(waits_, 0);
    ASSERT_GE(progress_.size(), 2U);
    EXPECT_EQ(progress_.front().fileName, u"a b.bin"_s);
    EXPECT_EQ(progress_.back().fileIndex, 1);
    EXPECT_EQ(progress_.back().fileCount, 2);
    // The empty one is reported once.
    EXPECT_EQ(progress_.back().fraction, 1);
    EXPECT_EQ(progress_[progress_.size() - 2].fileIndex, 0);
}

TEST_F(FerrylaneV4SenderTest, tellsWhatThePhoneDidWrong)
{
    const QByteArray longAnswer = "HTTP/1.1 200 OK\r\n\r\n" + QByteArray(70000, 'x');
    const QByteArray noHttp = "2438 Invalid HTTP response from phone.";
    const struct {
        const char* name;
        FakePhone::Part part;
        QByteArray outcome;
    } rows[] = {
        {"refused after all", answering(httpAnswer("400 Bad Request", " Authentication failed\n")),
            "400 Phone returned 400: Authentication failed"},
        {"refused before the end", [](Upload& u) { u.answer(busy); },
            "409 Phone returned 409: BUSY"},
        {"refused without a reason", answering("HTTP/1.1 507 x\r\n\r\n"), "507 Phone returned 507"},
        {"accepted before the end", [](Upload& u) { u.answer(ready); }, noHttp},
        {"not HTTP", answering("hello\r\n"), noHttp},
        {"no number", answering("HTTP/1.1 fine\r\n\r\n"), noHttp},
        {"not UTF-8", answering("HTTP/1.1 200 \xff\r\n\r\n"), noHttp},
        {"no answer", answering({}), noHttp},
        {"too long an answer",
            [&](Upload& u) {
                answering(longAnswer)(u);
                u.stall();
            },
            "1"},
    };
    const QString path = folders_.file(u"f"_s, support::testContent(20 * 1048576));
    for (const auto& row : rows) {
        FakePhone phone(row.part);
        EXPECT_EQ(send({path}, target(phone.baseURL())), QString::fromLatin1(row.outcome))
            << row.name;
    }
}

TEST_F(FerrylaneV4SenderTest, refusesBadTargetsWithoutConnecting)
{
    FakePhone phone(takeFile);
    const QString path = folders_.file(u"f"_s, "x");
    const QString good = phone.baseURL();
    const struct {
        FerrylanePairedTarget target;
        const char* outcome;
    } rows[] = {
        {{u"p"_s, good, QString(42, u'A')}, "2430 Paired receiver key is invalid."},
        {{u"p"_s, good, u"%"_s}, "2430 Paired receiver key is invalid."},
        {target(u"http://127.0.0.1"_s), "2432 Paired phone address is invalid."},
        {target(u"http://127.0.0.1:65536"_s), "2432 Paired phone address is invalid."},
        {target(u"http://:8787"_s), "2432 Paired phone address is invalid."},
        {target(u"phone"_s), "2432 Paired phone address is invalid."},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(send({path}, row.target), QString::fromLatin1(row.outcome));
    }
    EXPECT_TRUE(phone.heads().empty());
}

TEST_F(FerrylaneV4SenderTest, waitsWhileThePhoneIsBusy)
{
    FakePhone phone(takeFile, {busy, busy, busy, ready});
    EXPECT_EQ(send({folders_.file(u"f"_s, "x")}, target(phone.baseURL())), u"1"_s);
    EXPECT_EQ(waits_, 1);
    EXPECT_EQ(phone.heads().size(), 5U);
}

TEST_F(FerrylaneV4SenderTest, speaksIPv6)
{
    FakePhone phone(takeFile);
    const QString url = phone.baseURL(u"[::1]"_s);
    EXPECT_EQ(send({folders_.file(u"f"_s, "x")}, target(url)), u"1"_s);
    const auto heads = phone.heads();
    ASSERT_EQ(heads.size(), 2U);
    EXPECT_TRUE(heads[1].contains("\r\nHost: " + url.mid(7).toUtf8() + "\r\n"))
        << heads[1].constData();
}

TEST_F(FerrylaneV4SenderTest, stopsAtTheFirstFailure)
{
    FakePhone phone(takeFile);
    const QString a = folders_.file(u"a"_s, "a");
    const QString missing = folders_.below(u"missing"_s);
    EXPECT_EQ(
        send({a, missing, a}, target(phone.baseURL())), u"0 missing: No such file or directory"_s);
    EXPECT_EQ(phone.uploadCount(), 1U);
}

TEST_F(FerrylaneV4SenderTest, sendsRegularFilesOfAnyName)
{
    FakePhone phone(takeFile);
    // Opening a FIFO would wait for a writer for ever.
    const QString fifo = folders_.below(u"fifo"_s);
    ASSERT_EQ(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    for (const QString& path : {fifo, folders_.below(QString())}) {
        EXPECT_EQ(send({path}, target(phone.baseURL())), u"2433 Could not read file size."_s);
    }
    const QByteArray plain = QFile::encodeName(folders_.file(u"a"_s, "content"));
    const auto noText = platform::FilePath::fromNative(plain + "\xff.txt");
    ASSERT_EQ(::rename(plain.constData(), noText.native().constData()), 0);
    EXPECT_EQ(send({noText}, target(phone.baseURL())), u"1"_s);
    EXPECT_TRUE(phone.heads().back().contains("\r\nX-Filename: a%EF%BF%BD.txt\r\n"));
    ::unlink(noText.native().constData());
}

TEST_F(FerrylaneV4SenderTest, neverCompletesAFileThatChangesMeanwhile)
{
    const QByteArray content = support::testContent(20 * 1048576);
    const QString path = folders_.file(u"f"_s, content);
    for (const qint64 newSize : {content.size() + 1, content.size() - 1}) {
        ASSERT_TRUE(QFile::resize(path, content.size()));
        QByteArray body;
        FakePhone phone([&](Upload& upload) {
            QFile::resize(path, newSize);
            body = upload.body();
        });
        EXPECT_EQ(send({path}, target(phone.baseURL())), u"0 f: changed while it was being sent"_s);
        ASSERT_TRUE(support::waitUntil([&] { return phone.uploadCount() == 1; }));
        EXPECT_FALSE(body.endsWith("0\r\n\r\n"));
    }
}

TEST_F(FerrylaneV4SenderTest, connectingHasALimit)
{
    const FullPort port;
    makeSender({50ms, 50ms, 20ms, 10s});
    for (const QString& url : {port.baseURL(), u"http://nobody.test:1"_s}) {
        EXPECT_EQ(send({folders_.file(u"f"_s, "x")}, target(url)),
            u"2435 Timed out connecting to Pixel 8 at %1."_s.arg(url.mid(7)));
    }
}

TEST_F(FerrylaneV4SenderTest, waitingForAnAnswerHasALimit)
{
    // A byte now and then does not put it off.
    FakePhone phone([](Upload& upload) {
        static_cast<void>(upload.body());
        for (int i = 0; i < 25; ++i) {
            upload.answer("H");
            std::this_thread::sleep_for(20ms);
        }
    });
    makeSender({2s, 300ms, 20ms, 200ms});
    const auto start = clock_.now();
    EXPECT_EQ(send({folders_.file(u"f"_s, "x")}, target(phone.baseURL())),
        u"%1 Connection timed out"_s.arg(ETIMEDOUT));
    EXPECT_LT(clock_.now() - start, 200ms + promptness);
}

TEST_F(FerrylaneV4SenderTest, reportsARefusedConnection)
{
    QString url;
    {
        url = FakePhone(takeFile).baseURL();
    }
    EXPECT_EQ(send({folders_.file(u"f"_s, "x")}, target(url)),
        u"%1 Connection refused"_s.arg(ECONNREFUSED));
}

TEST_F(FerrylaneV4SenderTest, cancellingEndsEveryWait)
{
    const FullPort full;
    std::atomic<bool> waiting = false;
    FakePhone busyPhone(takeFile, {busy});
    FakePhone stalling([&](Upload& upload) {
        waiting = true;
        upload.stall();
    });
    FakePhone silent([&](Upload& upload) {
        static_cast<void>(upload.body());
        waiting = true;
        upload.stall();
    });
    const QString path = folders_.file(u"f"_s, support::testContent(20 * 1048576));
    const struct {
        const char* name;
        QString url;
        std::function<bool()> isThere;
    } rows[] = {
        {"busy", busyPhone.baseURL(),
            [&] {
                QCoreApplication::processEvents();
                return waits_ > 0;
            }},
        {"name", u"http://nobody.test:1"_s, [] { return true; }},
        {"status", full.baseURL(), [] { return true; }},
        {"connection", full.baseURL(),
            [] {
                std::this_thread::sleep_for(500ms);
                return true;
            }},
        {"answer", silent.baseURL(), [&] { return waiting.load(); }},
        {"chunk", stalling.baseURL(), [&] { return waiting.load(); }},
    };
    for (const auto& row : rows) {
        waiting = false;
        start({path}, target(row.url));
        ASSERT_TRUE(support::waitUntil(row.isThere)) << row.name;
        std::this_thread::sleep_for(30ms); // into the wait itself
        const auto start = clock_.now();
        sender_->cancel();
        EXPECT_EQ(outcome(), u"2431 Transfer stopped."_s) << row.name;
        EXPECT_LT(clock_.now() - start, promptness) << row.name;
    }
    // Of the record that was being sent nothing is left for the next file: two records of 24 bytes
    // and their plaintext, and their chunks.
    QByteArray body;
    FakePhone taking([&](Upload& upload) {
        body = upload.body();
        upload.answer(httpAnswer("200 OK", "OK SHA256"));
    });
    EXPECT_EQ(send({folders_.file(u"x"_s, "x")}, target(taking.baseURL())), u"1"_s);
    EXPECT_EQ(body.size(), (4 + 24 + 1 + 2) + (4 + 24 + 32 + 2) + 5);
}

TEST_F(FerrylaneV4SenderTest, cancellingWithoutAJobChangesNothing)
{
    FakePhone phone(takeFile);
    sender_->cancel();
    EXPECT_EQ(send({folders_.file(u"f"_s, "x")}, target(phone.baseURL())), u"1"_s);
}

TEST_F(FerrylaneV4SenderTest, isSilentOnceItHasGone)
{
    FakePhone phone([](Upload& upload) { upload.stall(); });
    start({folders_.file(u"f"_s, support::testContent(20 * 1048576))}, target(phone.baseURL()));
    ASSERT_TRUE(support::waitUntil([&] { return phone.uploadCount() == 1; }));
    const auto start = clock_.now();
    sender_ = nullptr;
    EXPECT_LT(clock_.now() - start, promptness);
    QCoreApplication::processEvents();
    EXPECT_FALSE(result_.has_value());
    EXPECT_TRUE(progress_.empty());
}
