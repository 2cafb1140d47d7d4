#include "camera/PairingScanner.h"

#include "app/widgets/QRCodeButton.h"
#include "support/HeldQueue.h"
#include "support/ManualClock.h"
#include "support/QtPrinting.h"

#include <QCoreApplication>
#include <QPainter>

#include <gtest/gtest.h>

#include <algorithm>

using namespace ferrylane;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

const QString valid = u"http://192.168.1.77:8787/?flkey="_s + QString(43, u'A');
const QString foreign = u"WIFI:S:home;;"_s;

/// A frame in which the code of a text is seen; none for an empty one.
QVideoFrame frameOf(const QString& text)
{
    QImage grey(640, 480, QImage::Format_Grayscale8);
    grey.fill(Qt::white);
    if (!text.isEmpty()) QPainter(&grey).drawImage(100, 60, qr(text, 6));
    QVideoFrame frame(QVideoFrameFormat(grey.size(), QVideoFrameFormat::Format_Y8));
    EXPECT_TRUE(frame.map(QVideoFrame::WriteOnly));
    for (int y = 0; y < grey.height(); ++y) {
        std::copy_n(grey.constScanLine(y), grey.width(), frame.bits(0) + y * frame.bytesPerLine(0));
    }
    frame.unmap();
    return frame;
}

class PairingScannerTest : public ::testing::Test {
protected:
    PairingScannerTest()
    {
        QObject::connect(
            scanner_.get(), &PairingScanner::invalidCode, [this] { told_ << foreign; });
        QObject::connect(scanner_.get(), &PairingScanner::codeFound,
            [this](const QString& text) { told_ << text; });
    }
    void scanAll()
    {
        vision_.runAll();
        QCoreApplication::processEvents();
    }

    support::ManualClock clock_;
    support::HeldQueue vision_;
    QStringList told_;
    std::unique_ptr<PairingScanner> scanner_
        = std::make_unique<PairingScanner>(vision_.queue(), clock_);
};

} // namespace

TEST_F(PairingScannerTest, scansFiveTimesASecondOneAtATime)
{
    const QVideoFrame frame = frameOf(foreign);
    scanner_->offer(frame);
    clock_.advance(199ms);
    scanner_->offer(frame);
    scanAll();
    EXPECT_EQ(told_.size(), 0) << "less than 0.2 s after the start";
    clock_.advance(1ms);
    scanner_->offer(frame);
    scanner_->offer(frame);
    clock_.advance(300ms);
    scanner_->offer(frame); // The first one has not been looked at yet.
    scanAll();
    EXPECT_EQ(told_.size(), 1);
    scanner_->offer(frame);
    scanAll();
    EXPECT_EQ(told_.size(), 2);
}

TEST_F(PairingScannerTest, goesOnAfterOtherCodesAndEndsWithThePhones)
{
    for (const QVideoFrame& frame : {frameOf(foreign), frameOf(QString()), QVideoFrame(),
             frameOf(valid), frameOf(valid), frameOf(foreign)}) {
        clock_.advance(200ms);
        scanner_->offer(frame);
        scanAll();
    }
    scanner_->offerText(valid);
    EXPECT_EQ(told_, QStringList({foreign, valid}));
}

TEST_F(PairingScannerTest, tellsNothingOnceItIsGone)
{
    clock_.advance(200ms);
    scanner_->offer(frameOf(valid));
    vision_.runAll();
    auto other = std::make_unique<PairingScanner>(vision_.queue(), clock_);
    clock_.advance(200ms);
    other->offer(frameOf(valid));
    other.reset();
    scanner_.reset();
    scanAll();
    EXPECT_EQ(told_, QStringList());
}
