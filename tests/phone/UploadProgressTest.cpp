#include "phone/UploadProgress.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace ferrylane::phone;
using namespace std::chrono_literals;

TEST(UploadProgress, showsShareAndSpeed)
{
    struct Row {
        qint64 done;
        qint64 total;
        platform::Duration elapsed;
        QString line;
    };
    const Row rows[] = {
        {0, 10'000'000, 0s, u"a.txt [------------------------------] 0%  0.0 MB/s"_s},
        {5'000'000, 10'000'000, 2s, u"a.txt [###############---------------] 50%  2.5 MB/s"_s},
        {10'000'000, 10'000'000, 4s, u"a.txt [##############################] 100%  2.5 MB/s"_s},
        {0, 0, 1s, u"a.txt [##############################] 100%  0.0 MB/s"_s},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(progressLine(u"a.txt"_s, row.done, row.total, row.elapsed), row.line);
    }
}
