#include "camera/PairingScanner.h"

#include "support/ManualQueue.h"
#include "support/PrivateUserFolders.h"
#include "support/QtPrinting.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace ferrylane;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

const QString valid = u"http://192.168.1.77:8787/?flkey="_s + QString(43, u'A');

class EmptyFrame final : public CameraFrame {
public:
    [[nodiscard]] LuminanceView luminance() const override { return {}; }
    [[nodiscard]] QImage image() const override { return {}; }
};

class PairingScannerTest : public ::testing::Test {
protected:
    /// Offers a frame in which `text` is to be seen.
    void offer(const std::optional<QString>& text)
    {
        seen_ = text;
        scanner_->offer(std::make_shared<EmptyFrame>());
    }
    void scanAll()
    {
        vision_.runAll();
        main_.runAll();
    }

    support::PrivateUserFolders folders_; ///< for the log
    support::ManualClock clock_;
    support::ManualQueue vision_, main_;
    std::optional<QString> seen_;
    int scans_ = 0;
    bool fails_ = false;
    QStringList told_;
    std::unique_ptr<PairingScanner> scanner_
        = std::make_unique<PairingScanner>(PairingScanner::Collaborators{vision_, main_, clock_,
                                               [this](const LuminanceView&) {
                                                   ++scans_;
                                                   if (fails_) throw std::runtime_error("broken");
                                                   return seen_;
                                               }},
            PairingScanner::Handlers{
                [this] { told_ << u"invalid"_s; }, [this](const QString& text) { told_ << text; }});
};

} // namespace

TEST_F(PairingScannerTest, scansFiveTimesASecondOneAtATime)
{
    offer({});
    scanAll();
    EXPECT_EQ(scans_, 0) << "less than 0.2 s after the start";
    clock_.advance(200ms);
    offer({});
    offer({});
    clock_.advance(300ms);
    offer({}); // The first one has not been looked at yet.
    scanAll();
    EXPECT_EQ(scans_, 1);
    offer({});
    scanAll();
    EXPECT_EQ(scans_, 2);
}

TEST_F(PairingScannerTest, goesOnAfterOtherCodesAndEndsWithThePhones)
{
    for (const auto& text : {std::optional(u"WIFI:S:home;;"_s), std::optional<QString>(),
             std::optional(valid), std::optional(valid)}) {
        clock_.advance(200ms);
        offer(text);
        scanAll();
    }
    EXPECT_EQ(told_, (QStringList{u"invalid"_s, valid}));
    EXPECT_EQ(scans_, 3);
    scanner_->offerText(valid);
    main_.runAll();
    EXPECT_EQ(told_.size(), 2);
}

TEST_F(PairingScannerTest, goesOnAfterAnErrorOfTheDetector)
{
    clock_.advance(200ms);
    fails_ = true;
    offer(valid);
    scanAll();
    fails_ = false;
    clock_.advance(200ms);
    offer(valid);
    scanAll();
    EXPECT_EQ(told_, QStringList(valid));
}

TEST_F(PairingScannerTest, tellsNothingOnceItIsGone)
{
    clock_.advance(200ms);
    offer(valid);
    vision_.runAll();
    scanner_.reset();
    main_.runAll();
    EXPECT_EQ(told_, QStringList());
}
