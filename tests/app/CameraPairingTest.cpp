#include "Controls.h"

#include "app/flows/CameraPairingController.h"
#include "app/widgets/QRCodeButton.h"
#include "app/windows/CameraPanel.h"
#include "support/HeldQueue.h"
#include "support/ManualClock.h"
#include "support/PrivateUserFolders.h"
#include "support/QtPrinting.h"

#include <QApplication>
#include <QBuffer>
#include <QClipboard>
#include <QElapsedTimer>
#include <QFile>
#include <QMimeData>
#include <QPainter>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

#include <sys/stat.h>

using namespace ferrylane;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using app_test::buttonNamed;

namespace {

const QString valid = u"http://192.168.1.77:8787/?flkey="_s + QString(43, u'A');

QImage codeOf(const QString& text)
{
    QImage grey(640, 480, QImage::Format_Grayscale8);
    grey.fill(Qt::white);
    QPainter(&grey).drawImage(100, 60, qr(text, 6));
    return grey;
}

/// A camera's frame with the code of a text.
QVideoFrame frameOf(const QString& text)
{
    const QImage code = codeOf(text);
    QVideoFrame frame(QVideoFrameFormat(code.size(), QVideoFrameFormat::Format_Y8));
    EXPECT_TRUE(frame.map(QVideoFrame::WriteOnly));
    for (int y = 0; y < code.height(); ++y) {
        std::copy_n(code.constScanLine(y), code.width(), frame.bits(0) + y * frame.bytesPerLine(0));
    }
    frame.unmap();
    return frame;
}

QByteArray pngOf(const QImage& picture)
{
    QByteArray content;
    QBuffer buffer(&content);
    EXPECT_TRUE(picture.save(&buffer, "PNG"));
    return content;
}

/// How it is with a computer's cameras.
struct Situation {
    bool mayBeUsed = true;
    bool isThere = true;
    QString failsWith{};
};

class FakeCameras final : public Cameras {
public:
    [[nodiscard]] bool mayBeUsed() const override { return situation.mayBeUsed; }
    [[nodiscard]] bool hasCamera() const override { return situation.isThere; }
    [[nodiscard]] std::unique_ptr<QObject> start(
        FrameHandler frame, FailureHandler failure) override
    {
        if (!situation.failsWith.isEmpty()) {
            throw std::runtime_error(situation.failsWith.toStdString());
        }
        onFrame = std::move(frame);
        onFailure = std::move(failure);
        isRunning = true;
        auto camera = std::make_unique<QObject>();
        QObject::connect(camera.get(), &QObject::destroyed, [this] { isRunning = false; });
        return camera;
    }

    Situation situation;
    bool isRunning = false;
    FrameHandler onFrame;
    FailureHandler onFailure;
};

class CameraPairingTest : public ::testing::Test {
protected:
    CameraPairingTest()
    {
        makeController();
        alertTimer_.callOnTimeout([this] { answerAlert(); });
        alertTimer_.start();
    }

    void present()
    {
        controller_->present();
        run();
    }
    void run()
    {
        for (int i = 0; i < 3; ++i) {
            QCoreApplication::processEvents();
            vision_.runAll();
        }
    }
    void answerAlert()
    {
        const QWidget* const dialog = QApplication::activeModalWidget();
        if (!dialog) return;
        alerts_ << dialog->findChild<QLabel*>()->text();
        buttonNamed(*dialog, goesOn_ ? u"Pair without camera\u2026"_s : u"OK"_s).click();
    }
    void show(const QString& text)
    {
        clock_.advance(200ms);
        cameras_.onFrame(frameOf(text));
        run();
    }
    void makeController()
    {
        controller_ = std::make_unique<CameraPairingController>(
            CameraPairingController::Collaborators{cameras_, vision_.queue(), clock_, parent_});
        QObject::connect(controller_.get(), &CameraPairingController::codeFound,
            [this](const QString& text) { told_ << text; });
        QObject::connect(
            controller_.get(), &CameraPairingController::closed, [this] { told_ << u"closed"_s; });
    }
    static void drop(const QMimeData& data)
    {
        QDragEnterEvent enter({50, 50}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(panel(), &enter);
        EXPECT_TRUE(enter.isAccepted());
        QDropEvent dropped({50, 50}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(panel(), &dropped);
    }
    /// The scanner's window; null when it is not shown.
    [[nodiscard]] static CameraPanel* panel()
    {
        for (QWidget* const widget : QApplication::topLevelWidgets()) {
            auto* const panel = dynamic_cast<CameraPanel*>(widget);
            if (panel && panel->isVisible()) return panel;
        }
        return nullptr;
    }
    [[nodiscard]] static bool says(const QString& text)
    {
        const auto labels = panel()->findChildren<QLabel*>();
        return std::any_of(labels.begin(), labels.end(),
            [&](const QLabel* label) { return label->text() == text; });
    }

    support::PrivateUserFolders folders_; ///< for the log
    support::ManualClock clock_;
    support::HeldQueue vision_;
    FakeCameras cameras_;
    QWidget parent_;
    QTimer alertTimer_;
    QStringList alerts_;  ///< titles
    bool goesOn_ = false; ///< without a camera
    QStringList told_;
    std::unique_ptr<CameraPairingController> controller_;
};

const QString invalidText = u"That is not a valid Ferrylane pairing QR."_s;

} // namespace

TEST_F(CameraPairingTest, goesOnAfterAForeignCodeAndEndsWithThePhones)
{
    present();
    ASSERT_TRUE(panel());
    EXPECT_TRUE(says(u"Looking for a Ferrylane QR\u2026"_s));
    show(u"WIFI:S:home;;"_s);
    EXPECT_TRUE(says(invalidText));
    EXPECT_TRUE(cameras_.isRunning);
    show(valid);
    EXPECT_EQ(told_, (QStringList{valid, u"closed"_s}));
    EXPECT_FALSE(panel());
    EXPECT_FALSE(cameras_.isRunning);
}

TEST_F(CameraPairingTest, closingTheWindowEndsItOnce)
{
    present();
    controller_->present();
    clock_.advance(200ms);
    cameras_.onFrame(frameOf(valid));
    vision_.runAll();
    panel()->close(); // before the code found has come to the main thread
    EXPECT_FALSE(cameras_.isRunning);
    run();
    EXPECT_EQ(told_, QStringList(u"closed"_s));
}

TEST_F(CameraPairingTest, whatIsWrongIsToldAndEndsIt)
{
    struct Row {
        Situation situation;
        QString alert;
    };
    const Row rows[]{
        {{.mayBeUsed = false}, u"Camera access needed"_s},
        {{.isThere = false}, u"No camera found"_s},
        {{.failsWith = u"broken"_s}, u"Could not start camera"_s},
    };
    for (const Row& row : rows) {
        cameras_.situation = row.situation;
        makeController();
        present();
        EXPECT_EQ(std::exchange(alerts_, {}), QStringList(row.alert));
        EXPECT_EQ(std::exchange(told_, {}), QStringList(u"closed"_s));
        EXPECT_FALSE(panel());
    }
}

TEST_F(CameraPairingTest, aCameraThatFailsLaterIsToldOf)
{
    present();
    ASSERT_TRUE(panel());
    cameras_.onFailure(u"unplugged"_s);
    cameras_.onFailure(u"still unplugged"_s);
    run();
    EXPECT_EQ(alerts_, QStringList(u"Could not start camera"_s));
    EXPECT_EQ(told_, QStringList(u"closed"_s));
}

TEST_F(CameraPairingTest, withoutACameraALinkCanBePasted)
{
    cameras_.situation.isThere = false;
    goesOn_ = true;
    present();
    ASSERT_TRUE(panel());
    QGuiApplication::clipboard()->setText(u"https://example.org"_s);
    buttonNamed(*panel(), u"Paste link"_s).click();
    run();
    EXPECT_TRUE(says(invalidText));
    QGuiApplication::clipboard()->setText(u" "_s + valid + u"\n"_s);
    buttonNamed(*panel(), u"Paste link"_s).click();
    run();
    EXPECT_EQ(told_, (QStringList{valid, u"closed"_s}));
}

TEST_F(CameraPairingTest, aPictureOfTheCodeCanBeDropped)
{
    const QByteArray picture = pngOf(codeOf(valid));
    QMimeData content, file;
    content.setData(u"image/png"_s, picture);
    file.setUrls({QUrl::fromLocalFile(folders_.file(u"code.png"_s, picture))});
    for (const QMimeData* const data : {&content, &file}) {
        makeController();
        present();
        drop(*data);
        run();
        EXPECT_EQ(std::exchange(told_, {}), (QStringList{valid, u"closed"_s}));
    }
}

TEST_F(CameraPairingTest, whatIsNoPictureIsToldSoonAndTheCameraGoesOn)
{
    const QString fifo = folders_.below(u"fifo"_s);
    ASSERT_EQ(mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    // White compresses to next to nothing.
    QImage huge(12000, 9000, QImage::Format_Mono);
    huge.fill(1);
    const QStringList paths{fifo, u"/dev/zero"_s, folders_.below(QString()),
        folders_.below(u"missing"_s), folders_.file(u"text.png"_s, "text"),
        folders_.file(u"huge.png"_s, pngOf(huge))};
    present();
    for (const QString& path : paths) {
        show(u"WIFI:S:home;;"_s);
        panel()->setStatus({});
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(path)});
        QElapsedTimer timer;
        timer.start();
        drop(data);
        EXPECT_TRUE(says({})) << "looked at in the main thread";
        run();
        EXPECT_TRUE(says(invalidText)) << qPrintable(path);
        EXPECT_LT(timer.elapsed(), 2000) << qPrintable(path);
    }
    show(valid);
    EXPECT_EQ(told_, (QStringList{valid, u"closed"_s}));
}
