#include "support/Host.h"
#include "support/QtPrinting.h"
#include "support/TestFiles.h"
#include "support/UploadStream.h"
#include "support/Waiting.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>

// The program on one computer, the command-line phone on another, a cable between.

using namespace Qt::StringLiterals;
using support::ChildProcess;
using support::Host;

namespace {

const QString program = QStringLiteral(FERRYLANE_PROGRAM);
const QString phoneProgram = QStringLiteral(FERRYLANE_PHONE_PROGRAM);

class TwoHosts : public ::testing::Test {
protected:
    void SetUp() override
    {
        try {
            computer_ = std::make_unique<Host>(u"computer"_s);
            phone_ = std::make_unique<Host>(u"phone"_s);
        } catch (const std::runtime_error& error) {
            // The checks that count run where namespaces are to be had.
            ASSERT_EQ(std::getenv("CI"), nullptr) << error.what();
            GTEST_SKIP() << "Two hosts need network namespaces, which are not permitted here";
        }
        Host::connect(*computer_, *phone_);
        computer_->setAddress(u"192.168.77.1"_s);
        phone_->setAddress(u"192.168.77.2"_s);
        for (Host* const host : {computer_.get(), phone_.get()}) {
            host->avahi().startBus();
            host->avahi().startDaemon();
        }
        support::writeFile(
            computer_->home().settingsFile(), "[General]\nFerrylaneDeviceName=Office PC\n");
        computer_->start(running_, u"program"_s, program, {});
        phone_->start(receiving_, u"receive"_s, phoneProgram,
            {u"receive"_s, u"--name"_s, u"Pixel 8"_s, u"--dir"_s, receivedFolder()});
        ASSERT_TRUE(support::waitUntil([this] { return !phoneLink().isEmpty(); }));
        ASSERT_TRUE(logHas("UDP discovery responder ready"));
    }

    [[nodiscard]] QString receivedFolder() const { return phone_->home().path() + u"/received"_s; }

    /// As "receive" prints it.
    [[nodiscard]] QString phoneLink() const
    {
        const QByteArray tag = "Pairing link: ";
        for (const QByteArray& line : phone_->outputOf(u"receive"_s).split('\n')) {
            if (line.startsWith(tag)) return QString::fromUtf8(line.sliced(tag.size()));
        }
        return {};
    }

    [[nodiscard]] bool logHas(const QByteArray& text) const
    {
        return support::waitUntil([&] { return computer_->home().log().contains(text); });
    }

    /// Whether a look at the network from `host` finds all of `texts`, sooner or later.
    [[nodiscard]] static bool discovers(const Host& host, const QList<QByteArray>& texts)
    {
        QByteArray found;
        const bool all = support::waitUntil([&] {
            found = host.run(phoneProgram, {u"discover"_s, u"--time=1"_s}).output;
            return std::all_of(texts.begin(), texts.end(),
                [&](const QByteArray& text) { return found.contains(text); });
        });
        EXPECT_TRUE(all) << found.constData();
        return all;
    }

    [[nodiscard]] QString pairedTargetsFile() const
    {
        return computer_->home().path() + u"/.local/share/Ferrylane/paired-targets-v2.json"_s;
    }

    void pairWithPixel8At(const QByteArray& address) const
    {
        support::writeFile(pairedTargetsFile(),
            R"([{"name":"pixel 8","baseURL":"http://)" + address + R"(:8787","keyB64":")"
                + QByteArray(43, 'A') + R"("}])");
    }

    [[nodiscard]] bool isPairedAt(const QByteArray& address) const
    {
        // The writer may put a backslash before each slash.
        return support::waitUntil([&] {
            return support::contentOf(pairedTargetsFile())
                .replace('\\', "")
                .contains("http://" + address + ":8787");
        });
    }

    std::unique_ptr<Host> computer_;
    std::unique_ptr<Host> phone_;
    ChildProcess running_;
    ChildProcess receiving_;
};

} // namespace

TEST_F(TwoHosts, findEachOtherAndSendFilesBothWays)
{
    EXPECT_TRUE(discovers(*phone_, {"Office PC  192.168.77.1:8788  (UDP)", "Office PC  (DNS-SD)"}));
    EXPECT_TRUE(discovers(*computer_, {"Pixel 8  192.168.77.2:8787  (UDP)", "Pixel 8  (DNS-SD)"}));
    EXPECT_TRUE(logHas("Nearby devices: Pixel 8\n"));

    const QByteArray content = support::testContent(3'000'000);
    const QString file = phone_->home().ownFile(u"photo.jpg"_s);
    support::writeFile(file, content);
    const QString link = computer_->home().pairingLink().replace(u"127.0.0.1"_s, u"192.168.77.1"_s);
    const auto up = phone_->run(phoneProgram, {u"upload"_s, u"--name=Pixel 8"_s, link, file});
    EXPECT_EQ(up.exitCode, 0) << up.errors.constData();
    EXPECT_EQ(computer_->home().received(u"Pixel 8/photo.jpg"_s), content);

    computer_->ip(u"address add fe80::77:1/64 dev eth0 nodad"_s);
    phone_->ip(u"address add fe80::77:2/64 dev eth0 nodad"_s);
    const QString local
        = computer_->home().pairingLink().replace(u"127.0.0.1"_s, u"[fe80::77:1%eth0]"_s);
    for (const QStringList& command :
        {QStringList{u"identify"_s, local}, {u"upload"_s, local, file}}) {
        const auto run = phone_->run(phoneProgram, command);
        EXPECT_EQ(run.exitCode, 0) << run.errors.constData();
    }

    EXPECT_TRUE(phoneLink().startsWith(u"http://192.168.77.2:8787/?flkey="_s));
    const auto down
        = computer_->run(phoneProgram, {u"upload"_s, u"--name=Office PC"_s, phoneLink(), file});
    EXPECT_EQ(down.exitCode, 0) << down.errors.constData();
    EXPECT_EQ(support::contentOf(receivedFolder() + u"/Office PC/photo.jpg"_s), content);
}

TEST_F(TwoHosts, followThePhoneToItsNewAddress)
{
    pairWithPixel8At("192.168.77.99");
    EXPECT_TRUE(isPairedAt("192.168.77.2"));
    phone_->setAddress(u"192.168.77.3"_s);
    EXPECT_TRUE(isPairedAt("192.168.77.3"));
    EXPECT_TRUE(logHas("Updated paired address for pixel 8: http://192.168.77.3:8787"));
}

TEST_F(TwoHosts, areNotKeptApartByAHostileNeighbour)
{
    pairWithPixel8At("192.168.77.2");
    // 300 requests a second from hosts that do not exist, and two of a phone. Then another host
    // answers under the phone's name.
    const auto neighbour = phone_->run(u"/usr/bin/python3"_s, {u"-c"_s, uR"(
from socket import *
import struct, time
raw = socket(AF_INET, SOCK_RAW, IPPROTO_RAW)
def forge(host, to, content):
    raw.sendto(struct.pack('!BBHHHBBH4s4sHHHH', 0x45, 0, 0, 0, 0, 64, 17, 0, inet_aton(host),
        inet_aton(to[0]), 8789, to[1], 8 + len(content), 0) + content, to)
computer, request = ('192.168.77.1', 8789), b'FERRYLANE_DISCOVER_V1'
phone = socket(AF_INET, SOCK_DGRAM)
phone.settimeout(0.6)
for i in range(1200):
    forge('192.168.77.%d' % (10 + i % 240), computer, request)
    time.sleep(1 / 300)
    if i % 150 == 149:
        phone.sendto(request, computer)
        assert phone.recvfrom(512)[1] == computer
listener = socket(AF_INET, SOCK_DGRAM)
listener.setsockopt(SOL_SOCKET, SO_REUSEPORT, 1)
listener.bind(('', 8789))
for scan in range(3):
    forge('192.168.77.66', listener.recvfrom(512)[1], b'FERRYLANE_HERE_V1|PIXEL 8|9')
)"_s});
    EXPECT_EQ(neighbour.exitCode, 0) << neighbour.errors.constData();
    EXPECT_TRUE(logHas("More than one device calls itself pixel 8"));
    EXPECT_TRUE(isPairedAt("192.168.77.2"));
    EXPECT_FALSE(computer_->home().log().contains("Updated paired address"));
}

TEST_F(TwoHosts, outlastALostLinkAndALostDaemon)
{
    ASSERT_TRUE(discovers(*phone_, {"(UDP)", "Office PC  (DNS-SD)"}));
    computer_->ip(u"link set eth0 down"_s);
    ASSERT_TRUE(logHas("Nearby devices: \n"));
    computer_->ip(u"link set eth0 up"_s);
    computer_->setAddress(u"192.168.77.1"_s);
    EXPECT_TRUE(discovers(*phone_, {"(UDP)", "Office PC  (DNS-SD)"}));

    computer_->avahi().killDaemon();
    EXPECT_TRUE(logHas("DNS-SD"));
    computer_->avahi().startDaemon();
    EXPECT_TRUE(discovers(*phone_, {"(UDP)", "Office PC  (DNS-SD)"}));
    EXPECT_TRUE(running_.isRunning());
}
