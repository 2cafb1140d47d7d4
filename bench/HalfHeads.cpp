#include "bench/HalfHeads.h"

#include "bench/Exchange.h"
#include "bench/Interruption.h"
#include "bench/ReceiveFolder.h"
#include "bench/Service.h"
#include "bench/Statistics.h"
#include "core/Service.h"
#include "support/TcpClient.h"

#include <atomic>
#include <cstdio>
#include <future>
#include <stdexcept>
#include <thread>

#include <sys/resource.h>

namespace bench {

namespace {

constexpr std::size_t clientCount = 5000;
constexpr int requestsBefore = 50;
constexpr int requestsAfter = 300;
constexpr auto pauseBetweenRequests = std::chrono::milliseconds(1);

struct Findings {
    std::vector<double> meanwhile; ///< milliseconds to an answer
    std::vector<double> afterwards;
    double memoryGrowth = 0; ///< MiB at most
    int threadsAdded = 0;
};

void allowDescriptors()
{
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
    if (limit.rlim_cur < clientCount + 100) {
        throw std::runtime_error("this process may not open enough connections");
    }
}

double millisecondsToStatus()
{
    const QByteArray request = QByteArrayLiteral("GET /transfer-status HTTP/1.1\r\n"
                                                 "Host: 127.0.0.1\r\n"
                                                 "Connection: close\r\n"
                                                 "\r\n");
    return 1000 * secondsToAnswer(ferrylane::port, request, QByteArrayLiteral("READY"));
}

template <typename Condition> std::vector<double> askWhile(const Condition& condition)
{
    std::vector<double> milliseconds;
    do {
        milliseconds.push_back(millisecondsToStatus());
        std::this_thread::sleep_for(pauseBetweenRequests);
    } while (condition(milliseconds.size()));
    return milliseconds;
}

std::vector<double> ask(int times)
{
    return askWhile([&](std::size_t done) { return done < static_cast<std::size_t>(times); });
}

std::vector<support::TcpClient> connectAll()
{
    const QByteArray halfHead = QByteArrayLiteral("GET /transfer-status HTTP/1.1\r\n"
                                                  "Host: 127.0.0.1\r\n"
                                                  "User-Agent: a client that never");
    std::vector<support::TcpClient> clients;
    clients.reserve(clientCount);
    while (clients.size() < clientCount) {
        throwIfInterrupted();
        // A client that the service has dropped for newer ones cannot send any more.
        clients.emplace_back().send(halfHead);
    }
    return clients;
}

Findings flood(const Process& service)
{
    Findings findings;
    static_cast<void>(ask(requestsBefore));
    const int threads = service.threads();
    const double memory = service.memory();
    service.resetPeakMemory();

    std::atomic<bool> connecting = true;
    auto meanwhile = std::async(std::launch::async,
        [&] { return askWhile([&](std::size_t /*done*/) { return connecting.load(); }); });
    std::vector<support::TcpClient> clients;
    try {
        clients = connectAll();
    } catch (...) {
        connecting = false; // or the other thread never ends
        throw;
    }
    connecting = false;
    findings.meanwhile = meanwhile.get();
    findings.afterwards = ask(requestsAfter);
    findings.memoryGrowth = service.peakMemory() - memory;
    findings.threadsAdded = service.threads() - threads;
    return findings;
}

void addLatency(const std::vector<double>& milliseconds, const QString& key, const QString& label,
    Report& report)
{
    const QString unit = QStringLiteral("ms");
    report.add({key + QStringLiteral("_median_ms"), label + QStringLiteral(", median"),
        median(milliseconds), unit, 3});
    report.add({key + QStringLiteral("_max_ms"), label + QStringLiteral(", longest"),
        maximum(milliseconds), unit, 3, Target{Target::Bound::below, 50}});
}

} // namespace

void measureHalfHeads(const QString& program, Report& report)
{
    std::fprintf(stderr, "Clients with half a head\n");
    allowDescriptors();
    const ReceiveFolder folder = ReceiveFolder::inMemory();
    const Service service(program, folder.path());
    const Findings findings = flood(service.process());

    report.beginSection(QStringLiteral("%1 clients that send half a head").arg(clientCount));
    addLatency(findings.meanwhile, QStringLiteral("status_meanwhile"),
        QStringLiteral("others' wait for an answer meanwhile"), report);
    addLatency(findings.afterwards, QStringLiteral("status_afterwards"),
        QStringLiteral("others' wait afterwards"), report);
    report.add({QStringLiteral("half_heads_memory_mib"), QStringLiteral("memory added at most"),
        findings.memoryGrowth, QStringLiteral("MiB"), 1, Target{Target::Bound::below, 20}});
    report.add({QStringLiteral("half_heads_threads"), QStringLiteral("threads added"),
        static_cast<double>(findings.threadsAdded), {}, 0, Target{Target::Bound::atMost, 0}});
}

} // namespace bench
