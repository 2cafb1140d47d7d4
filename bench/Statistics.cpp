#include "bench/Statistics.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace bench {

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    if (values.size() % 2 == 1) return values[middle];
    return (values[middle - 1] + values[middle]) / 2;
}

double percentile(std::vector<double> values, double percent)
{
    std::sort(values.begin(), values.end());
    const double rank = std::ceil(percent / 100 * static_cast<double>(values.size()));
    return values[static_cast<std::size_t>(std::max(rank, 1.0)) - 1];
}

double maximum(const std::vector<double>& values)
{
    return *std::max_element(values.begin(), values.end());
}

} // namespace bench
