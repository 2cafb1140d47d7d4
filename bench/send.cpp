// How fast files are sent, and what that takes; see --help.

#include "bench/CommonOptions.h"
#include "bench/Interruption.h"
#include "bench/SendThroughput.h"
#include "bench/SenderProcess.h"
#include "bench/SenderRole.h"
#include "bench/SmallSends.h"

#include <QCoreApplication>

#include <cstdio>
#include <exception>
#include <optional>

namespace {

constexpr const char* description
    = "Measures the sender, in a process and a home of its own, over the loopback interface.\n"
      "\n"
      "A big file in memory goes to a phone that reads everything and keeps nothing. It stands\n"
      "beside this machine's cryptography through the same calls; the two take turns, figures\n"
      "are the medians of the runs, and ratios are taken within a run. Then come 1,000 small\n"
      "files, once a run, each after the question whether the phone is ready.\n"
      "\n"
      "MB and GB are decimal. Run it while nothing else runs; --size 4096 needs 5 GB of memory.";

struct Options {
    bench::CommonOptions common;
    std::optional<QString> phone; ///< this process is the sender
};

const QCommandLineOption& phoneOption()
{
    static const QCommandLineOption option = [] {
        QCommandLineOption phone(QString::fromLatin1(bench::senderRoleOption));
        phone.setValueName(QStringLiteral("URL"));
        phone.setFlags(QCommandLineOption::HiddenFromHelp);
        return phone;
    }();
    return option;
}

Options readOptions(const QCoreApplication& application)
{
    QCommandLineParser parser;
    bench::CommonOptions::prepare(parser, description);
    parser.addOption(phoneOption());
    parser.process(application);
    Options options{bench::CommonOptions::of(parser), std::nullopt};
    if (parser.isSet(phoneOption())) options.phone = parser.value(phoneOption());
    return options;
}

void measure(const bench::CommonOptions& options)
{
    bench::Report report(QStringLiteral("Sending %1 MiB, %2 runs")
                             .arg(options.size / bench::mebibyte)
                             .arg(options.runs));
    bench::measureSendThroughput({options.size, options.runs}, report);
    bench::measureSmallSends(options.runs, report);
    options.print(report);
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    try {
        const Options options = readOptions(application);
        if (options.phone) {
            bench::playSender(*options.phone);
            return 0;
        }
        bench::deferInterruption();
        measure(options.common);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_send: %s\n", error.what());
        return 1;
    }
}
