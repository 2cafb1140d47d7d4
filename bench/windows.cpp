// How long the windows hold the main thread up, also with a transfer log of years; see --help.

#include "app/widgets/Appearance.h"
#include "app/widgets/QRCodeButton.h"
#include "app/windows/AccessPanel.h"
#include "app/windows/DevicesPanel.h"
#include "app/windows/InfoPanel.h"
#include "app/windows/InfoTexts.h"
#include "app/windows/MainPanel.h"
#include "bench/Report.h"
#include "bench/Statistics.h"
#include "bench/Stopwatch.h"
#include "core/Settings.h"
#include "transferlog/TransferLogKeeper.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>

namespace {

using namespace ferrylane;

constexpr int runs = 9;
constexpr int loggedTransfers = 100'000;
constexpr bench::Target target{bench::Target::Bound::below, 100};

double milliseconds(const std::function<void()>& work)
{
    const bench::Stopwatch stopwatch;
    work();
    return stopwatch.seconds() * 1000;
}

/// From asking for the window until it has been drawn, the median.
template <typename Make> double openingTime(const Make& make)
{
    std::vector<double> values;
    for (int i = 0; i < runs; ++i) {
        values.push_back(milliseconds([&] {
            const auto window = make();
            window->present();
            QApplication::processEvents();
        }));
        QApplication::processEvents();
    }
    return bench::median(values);
}

/// The longest time that the event loop is held up until `isDone`.
double longestPause(const std::function<bool()>& isDone)
{
    double longest = 0;
    while (!isDone()) {
        longest = std::max(
            longest, milliseconds([] { QApplication::processEvents(QEventLoop::AllEvents); }));
    }
    return longest;
}

QList<FerrylaneTransferLogEntry> longLog()
{
    QList<FerrylaneTransferLogEntry> entries;
    const QDateTime now = QDateTime::currentDateTimeUtc();
    for (int i = 0; i < loggedTransfers; ++i) {
        entries.append({now.addSecs(i - loggedTransfers), QStringLiteral("Received"),
            QStringLiteral("IMG_%1.jpg").arg(i), {}, QStringLiteral("Completed"), 2'345'678});
    }
    return entries;
}

void measureOpening(bench::Report& report)
{
    report.beginSection(QStringLiteral("Opening a window"));
    const auto add = [&](const QString& name, double value) {
        report.add({QString(name).replace(u' ', u'_') + QStringLiteral("_ms"), name, value,
            QStringLiteral("ms"), 1, target});
    };
    const QImage code = qr(QStringLiteral("http://192.168.1.20:8788/?flkey=") + QString(43, u'K'));
    QStringList names;
    for (int i = 0; i < 100; ++i) {
        names << QStringLiteral("Phone %1").arg(i);
    }
    add(QStringLiteral("main panel"), openingTime([] { return std::make_unique<MainPanel>(); }));
    add(QStringLiteral("QR and address"), openingTime([&] {
        return std::make_unique<AccessPanel>(code, QStringLiteral("http://192.168.1.20:8788"));
    }));
    add(QStringLiteral("a hundred devices"), openingTime([&] {
        auto panel = std::make_unique<DevicesPanel>();
        panel->setNearby(names);
        return panel;
    }));
    add(QStringLiteral("info and settings"),
        openingTime([] { return std::make_unique<InfoPanel>(InfoPanel::State{}); }));
}

void measureLongLog(bench::Report& report)
{
    report.beginSection(QStringLiteral("With %1 logged transfers").arg(loggedTransfers));
    TransferLogKeeper keeper;
    userSettings().set(ferrylaneTransferLogContinuousKey, true);
    saveFerrylaneTransferLog(longLog());

    bool isAppended = false;
    QObject::connect(&keeper, &TransferLogKeeper::ferrylaneTransferLogChanged, &keeper,
        [&] { isAppended = true; });
    const bench::Stopwatch whole;
    const double call
        = milliseconds([&] { keeper.append({.fileName = QStringLiteral("one more")}); });
    const double pause = longestPause([&] { return isAppended; });
    report.add({QStringLiteral("append_pause_ms"),
        QStringLiteral("main thread held up by an append, at most"), std::max(call, pause),
        QStringLiteral("ms"), 1, target});
    report.add({QStringLiteral("append_ms"), QStringLiteral("until it is written, beside it"),
        whole.seconds() * 1000, QStringLiteral("ms"), 0});

    InfoPanel panel({});
    panel.present();
    qsizetype shown = 0;
    using Shown = std::pair<QString, QStringList>;
    keeper.read(
        &panel,
        [](const QList<FerrylaneTransferLogEntry>& entries) {
            return Shown(transferSummary(entries), ferrylaneTransferLogLines(entries));
        },
        [&](const Shown& made) {
            panel.setTransfers(made.first, made.second);
            shown = made.second.size();
        });
    const bench::Stopwatch loading;
    const double loadingPause
        = longestPause([&] { return shown > 0 && panel.shownTransfers() == shown; });
    report.add({QStringLiteral("list_pause_ms"),
        QStringLiteral("main thread held up by loading the list, at most"), loadingPause,
        QStringLiteral("ms"), 1, target});
    report.add({QStringLiteral("list_ms"), QStringLiteral("until the list is complete"),
        loading.seconds() * 1000, QStringLiteral("ms"), 0});
}

} // namespace

int main(int argc, char** argv)
{
    if (argc > 1 && std::strcmp(argv[1], "--json") != 0) {
        std::puts("Usage: bench_windows [--json]\n\nMeasures how long opening a window takes, and "
                  "how long a long transfer log holds\nthe main thread up, without a display.");
        return 0;
    }
    const QTemporaryDir home;
    for (const char* const name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME"}) {
        qputenv(name, home.path().toLocal8Bit());
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    useLightAppearance();
    bench::Report report(QStringLiteral("The windows"));
    measureOpening(report);
    measureLongLog(report);
    if (argc > 1) {
        std::puts(report.json().constData());
    } else {
        std::fputs(report.table().toUtf8().constData(), stdout);
    }
    return 0;
}
