#include "bench/SendCost.h"

#include <QList>

#include <vector>

namespace bench {

QByteArray SendCost::toLine() const
{
    QByteArray line;
    for (const double value :
        {seconds, processorTime.user, processorTime.system, idleMemory, peakMemory}) {
        line += QByteArray::number(value, 'f', 6) + ' ';
    }
    line.back() = '\n';
    return line;
}

std::optional<SendCost> SendCost::fromLine(const QByteArray& line)
{
    std::vector<double> values;
    for (const QByteArray& word : line.trimmed().split(' ')) {
        bool isNumber = false;
        values.push_back(word.toDouble(&isNumber));
        if (!isNumber) return std::nullopt;
    }
    if (values.size() != 5) return std::nullopt;
    return SendCost{values[0], {values[1], values[2]}, values[3], values[4]};
}

} // namespace bench
