#include "app/InboundTransfer.h"

#include "core/Notifications.h"
#include "support/ManualQueue.h"
#include "support/PrivateUserFolders.h"

#include <gtest/gtest.h>

#include <QStringList>

using namespace ferrylane;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

class FakeViews final : public InboundTransfer::Views {
public:
    void setStatusTitle(const QString& title) override { titles.append(title); }
    void setReceiveStatus(const QString& text) override { receiveStatus = text; }
    void showProgressWindow() override { isOpen = true; }
    void setProgress(const QString& fileName, double percent, const QString& text) override
    {
        if (isOpen) window = u"%1 %2 %3"_s.arg(fileName).arg(percent).arg(text);
    }
    void closeProgressWindow() override { isOpen = false; }

    QStringList titles;
    QString receiveStatus;
    QString window;
    bool isOpen = false;
};

class InboundTransferTest : public ::testing::Test {
protected:
    void post(QLatin1StringView name, platform::NotificationCenter::Payload payload = {})
    {
        center_.post(name, std::move(payload));
        queue_.runAll();
    }

    support::PrivateUserFolders folders_;
    support::ManualQueue queue_;
    platform::NotificationCenter center_{queue_};
    FakeViews views_;
    QStringList received_;
    InboundTransfer transfer_{
        center_, queue_, views_, [this](const QString& name) { received_.append(name); }};
};

} // namespace

TEST_F(InboundTransferTest, showsAFileFromStartToEnd)
{
    post(FerrylaneStarted, u"photo.jpg"_s);
    EXPECT_TRUE(views_.isOpen);
    post(FerrylaneProgress, 0.423);
    post(FerrylaneSpeed, 3.14);
    EXPECT_EQ(views_.receiveStatus, u"42.3%  3.1 MB/s"_s);
    EXPECT_EQ(views_.window, u"photo.jpg 42.3 42.3%   3.1 MB/s"_s);
    post(FerrylaneReceived, u"photo (1).jpg"_s);
    EXPECT_EQ(received_, QStringList{u"photo (1).jpg"_s});
    EXPECT_EQ(views_.receiveStatus, QString());
    EXPECT_EQ(views_.window, u"photo (1).jpg 100 100.0%   Done"_s);
    queue_.advance(1499ms);
    EXPECT_TRUE(views_.isOpen);
    queue_.advance(1ms);
    EXPECT_FALSE(views_.isOpen);
}

TEST_F(InboundTransferTest, keepsTheWindowForAFileThatFollows)
{
    for (int i = 0; i < 2; ++i) {
        post(FerrylaneStarted, u"a"_s);
        post(FerrylaneReceived, u"a"_s);
        queue_.advance(1s);
    }
    post(FerrylaneStarted, u"b"_s);
    queue_.advance(10s);
    EXPECT_TRUE(views_.isOpen);
    EXPECT_EQ(views_.titles,
        (QStringList{u"\u21C4 \u2026"_s, u"\u21C4 1"_s, u"\u21C4 \u2026"_s, u"\u21C4 2"_s,
            u"\u21C4 \u2026"_s}));
}

TEST_F(InboundTransferTest, clampsAndIgnoresWhatMakesNoSense)
{
    post(FerrylaneStarted);
    post(FerrylaneProgress, 1.7);
    post(FerrylaneSpeed, -1.0);
    post(FerrylaneProgress, u"0.1"_s);
    EXPECT_EQ(views_.window, u"file 100 100.0%   0.0 MB/s"_s);
    post(FerrylaneProgress, -0.2);
    EXPECT_EQ(views_.receiveStatus, u"0.0%  0.0 MB/s"_s);
    post(FerrylaneReceived, 1.0);
    EXPECT_EQ(received_, QStringList{u"file"_s});
}

TEST_F(InboundTransferTest, showsNothingOfAStoppedFile)
{
    post(FerrylaneStarted, u"a"_s);
    post(FerrylaneStopped, u"Authentication failed"_s);
    EXPECT_FALSE(views_.isOpen);
    EXPECT_FALSE(transfer_.isRunning());
    EXPECT_EQ(views_.receiveStatus, QString());
    EXPECT_EQ(views_.titles.last(), u"\u21C4"_s);
    EXPECT_TRUE(received_.isEmpty());
}
