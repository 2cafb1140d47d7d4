// How fast the service receives, and what that takes; see --help.

#include "bench/HalfHeads.h"
#include "bench/Interruption.h"
#include "bench/SmallUploads.h"
#include "bench/Throughput.h"
#include "support/PrivateNetwork.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>
#include <exception>
#include <stdexcept>

namespace {

constexpr qint64 mebibyte = 1048576;

constexpr const char* description
    = "Measures the receiver service: the program itself, in a process and a home of its own, "
      "over\n"
      "the loopback interface.\n"
      "\n"
      "Big uploads go into a folder in memory. They stand beside this machine's cryptography "
      "through\n"
      "the same calls, and beside a receiver of the same bytes without any; the three take turns,\n"
      "figures are the medians of the runs, and ratios are taken within a run. Then come small\n"
      "uploads, into memory and onto the disk, and clients that never finish their request.\n"
      "\n"
      "MB and GB are decimal. Run it while nothing else runs; --size 4096 needs 9 GB of memory.";

struct Options {
    bench::ThroughputPlan throughput;
    bool json = false;
};

const QCommandLineOption& sizeOption()
{
    static const QCommandLineOption option(QStringLiteral("size"),
        QStringLiteral("Size of a big upload (default 1024)."), QStringLiteral("MiB"),
        QStringLiteral("1024"));
    return option;
}

const QCommandLineOption& runsOption()
{
    static const QCommandLineOption option(QStringLiteral("runs"),
        QStringLiteral("Number of timed big uploads (default 5)."), QStringLiteral("N"),
        QStringLiteral("5"));
    return option;
}

const QCommandLineOption& jsonOption()
{
    static const QCommandLineOption option(
        QStringLiteral("json"), QStringLiteral("Print one line of JSON in place of the table."));
    return option;
}

const QCommandLineOption& programOption()
{
    static const QCommandLineOption option(QStringLiteral("program"),
        QStringLiteral("The program to measure (default: the one built with this)."),
        QStringLiteral("path"), QStringLiteral(FERRYLANE_PROGRAM));
    return option;
}

int positive(const QCommandLineParser& parser, const QCommandLineOption& option)
{
    const int value = parser.value(option).toInt();
    if (value < 1) {
        throw std::runtime_error(
            "--" + option.names().first().toStdString() + " takes a number of at least 1");
    }
    return value;
}

Options readOptions(const QCoreApplication& application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QString::fromLatin1(description));
    parser.addHelpOption();
    parser.addOptions({sizeOption(), runsOption(), jsonOption(), programOption()});
    parser.process(application);
    return {{parser.value(programOption()), positive(parser, sizeOption()) * mebibyte,
                positive(parser, runsOption())},
        parser.isSet(jsonOption())};
}

void measure(const Options& options)
{
    const auto& throughput = options.throughput;
    bench::Report report(QStringLiteral("Receiving %1 MiB, %2 runs")
                             .arg(throughput.size / mebibyte)
                             .arg(throughput.runs));
    bench::measureThroughput(throughput, report);
    bench::measureSmallUploads({throughput.program, QStringLiteral(FERRYLANE_DISK_FOLDER)}, report);
    bench::measureHalfHeads(throughput.program, report);

    const QByteArray text = options.json ? report.json() : report.table().toUtf8();
    std::fputs(text.constData(), stdout);
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    try {
        const Options options = readOptions(application);
        if (!support::enterPrivateNetwork()) {
            std::fprintf(
                stderr, "No network of our own permitted; the service's port must be free\n");
        }
        bench::deferInterruption();
        measure(options);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_receive: %s\n", error.what());
        return 1;
    }
}
