#pragma once

#include "Desktop.h"

#include "support/ProgramUnderTest.h"
#include "support/QtPrinting.h"
#include "support/StartDaemon.h"
#include "support/TestFiles.h"
#include "support/UploadStream.h"
#include "support/Waiting.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <optional>

namespace desktop {

using namespace Qt::StringLiterals;

inline constexpr QSize panelSize(318, 555);
inline constexpr QSize progressSize(340, 112);
inline constexpr QSize dragSourceSize(200, 100);

class DesktopTest : public ::testing::Test {
protected:
    void SetUp() override { support::writeFile(home_.ownFile(u"phone"_s), {}); }

    void start(Desktop::Tray tray = Desktop::Tray::present)
    {
        desktop_.emplace(home_, tray);
        program_.emplace(QStringLiteral(FERRYLANE_PROGRAM), home_, desktop_->environment());
        ASSERT_TRUE(program_->start()) << home_.log().constData();
        panel_ = desktop_->waitForWindow(panelSize).geometry;
        ASSERT_EQ(panel_.size(), panelSize);
    }

    [[nodiscard]] Window trayIcon() const
    {
        return desktop_->waitForWindow([](QSize size) { return size.width() <= 32; });
    }

    [[nodiscard]] support::Command phone(const QStringList& arguments) const
    {
        return {.program = QStringLiteral(FERRYLANE_PHONE_PROGRAM),
            .arguments = arguments,
            .environment = home_.environment(),
            .outputFile = home_.ownFile(u"phone"_s),
            .errorFile = home_.ownFile(u"phone-errors"_s)};
    }

    /// Exit code of a second launch of the program, which only hands over what it is to do.
    std::optional<int> launchAgain(const QString& action = u"show"_s)
    {
        support::ChildProcess second;
        second.start({.program = QStringLiteral(FERRYLANE_PROGRAM),
            .arguments = {u"--action="_s + action},
            .environment = desktop_->environment()});
        return second.waitForEnd(support::patience);
    }

    /// Plays a phone called Pixel 8 in `process`; returns its pairing link.
    QString startPhone(support::ChildProcess& process)
    {
        support::startDaemon(process,
            phone({u"receive"_s, u"--dir"_s, onPhone_, u"--name"_s, u"Pixel 8"_s}), "flkey=");
        static const QRegularExpression key(u"flkey=([A-Za-z0-9_-]{43})"_s);
        const QByteArray shown = support::contentOf(home_.ownFile(u"phone"_s));
        return u"http://127.0.0.1:8787/?flkey=%1&name=Pixel%208"_s.arg(
            key.match(QString::fromUtf8(shown)).captured(1));
    }

    /// Drags files from another program onto the drop area, and chooses the first receiver.
    void sendByDragging(const QStringList& files)
    {
        support::ChildProcess source;
        source.start({.program = QStringLiteral(DRAG_SOURCE_PROGRAM),
            .arguments = files,
            .environment = desktop_->environment()});
        QRect from;
        ASSERT_TRUE(support::waitUntil([&] {
            const auto windows = desktop_->windows(u"drag_source"_s);
            if (!windows.isEmpty()) from = windows.first().geometry;
            return from.size() == dragSourceSize;
        }));
        const auto isChooser = [](QSize size) { return size.width() > 340 && size.height() < 400; };
        Window chooser;
        // As a person does when the first attempt slips.
        for (int attempt = 0; attempt < 3 && chooser.id.isEmpty(); ++attempt) {
            // A place beside the button on the drop area.
            desktop_->drag(from.center(), panel_.topLeft() + QPoint(45, 345));
            chooser = desktop_->waitForWindow(isChooser, support::patience / 4);
        }
        ASSERT_FALSE(chooser.id.isEmpty());
        ASSERT_TRUE(desktop_->waitForFocus(chooser));
        desktop_->press({u"Return"_s});
    }

    /// Waits until so many transfers are logged, and returns how they went.
    [[nodiscard]] QStringList transfers(qsizetype count) const
    {
        QStringList all;
        static_cast<void>(support::waitUntil([&] {
            all.clear();
            const QByteArray json = support::contentOf(home_.transferLogFile());
            for (const QJsonValue entry : QJsonDocument::fromJson(json).array()) {
                all << entry[u"direction"_s].toString() + u' ' + entry[u"fileName"_s].toString()
                        + u' ' + entry[u"result"_s].toString();
            }
            return all.size() == count;
        }));
        return all;
    }

    support::PrivateHome home_;
    const QString onPhone_ = home_.ownFile(u"on the phone"_s); ///< what the phone has received
    std::optional<Desktop> desktop_;
    std::optional<support::ProgramUnderTest> program_;
    QRect panel_; ///< the main panel's place
};

} // namespace desktop
