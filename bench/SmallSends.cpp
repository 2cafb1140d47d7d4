#include "bench/SmallSends.h"

#include "bench/DrainingPhone.h"
#include "bench/ReceiveFolder.h"
#include "bench/SenderProcess.h"
#include "bench/SourceFiles.h"
#include "bench/Statistics.h"

#include <cstdio>

namespace bench {

namespace {

constexpr qint64 fileBytes = 4096;
constexpr int warmUpFiles = 30;
constexpr int timedFiles = 1000;

} // namespace

void measureSmallSends(int runs, Report& report)
{
    std::fprintf(stderr, "Small files\n");
    const ReceiveFolder folder = ReceiveFolder::inMemory();
    const QString warmUp = folder.path() + QStringLiteral("/warm-up");
    const QString timed = folder.path() + QStringLiteral("/timed");
    writeSourceFiles(warmUp, warmUpFiles, fileBytes);
    writeSourceFiles(timed, timedFiles, fileBytes);

    const DrainingPhone phone;
    SenderProcess sender(phone.baseURL());
    static_cast<void>(sender.send(warmUp));
    std::vector<double> filesPerSecond;
    for (int i = 0; i < runs; ++i) {
        filesPerSecond.push_back(timedFiles / sender.send(timed).seconds);
    }
    report.beginSection(QStringLiteral("1,000 files of 4 KiB, a status request before each"));
    report.add({QStringLiteral("small_files_per_s"), QStringLiteral("files a second"),
        median(filesPerSecond), QStringLiteral("1/s"), 0, Target{Target::Bound::atLeast, 150}});
}

} // namespace bench
