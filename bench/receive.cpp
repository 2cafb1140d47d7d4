// How fast the service receives, and what that takes; see --help.

#include "bench/CommonOptions.h"
#include "bench/HalfHeads.h"
#include "bench/Interruption.h"
#include "bench/SmallUploads.h"
#include "bench/Throughput.h"
#include "support/PrivateNetwork.h"

#include <QCoreApplication>

#include <cstdio>
#include <exception>

namespace {

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
    bench::CommonOptions common;
    QString program;
};

const QCommandLineOption& programOption()
{
    static const QCommandLineOption option(QStringLiteral("program"),
        QStringLiteral("The program to measure (default: the one built with this)."),
        QStringLiteral("path"), QStringLiteral(FERRYLANE_PROGRAM));
    return option;
}

Options readOptions(const QCoreApplication& application)
{
    QCommandLineParser parser;
    bench::CommonOptions::prepare(parser, description);
    parser.addOption(programOption());
    parser.process(application);
    return {bench::CommonOptions::of(parser), parser.value(programOption())};
}

void measure(const Options& options)
{
    const auto& [size, runs, json] = options.common;
    bench::Report report(
        QStringLiteral("Receiving %1 MiB, %2 runs").arg(size / bench::mebibyte).arg(runs));
    bench::measureThroughput({options.program, size, runs}, report);
    bench::measureSmallUploads({options.program, QStringLiteral(FERRYLANE_DISK_FOLDER)}, report);
    bench::measureHalfHeads(options.program, report);
    options.common.print(report);
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
