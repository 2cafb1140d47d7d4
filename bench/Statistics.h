#pragma once

#include <functional>
#include <vector>

namespace bench {

/// MB and GB are decimal, as speeds are given.
constexpr double bytesPerMegabyte = 1e6;
constexpr double bytesPerGigabyte = 1e9;

// Of the values of repeated measurements. There must be one at least.

[[nodiscard]] double median(std::vector<double> values);
/// The smallest value that `percent` of all values do not exceed (nearest rank).
[[nodiscard]] double percentile(std::vector<double> values, double percent);
[[nodiscard]] double maximum(const std::vector<double>& values);

/// The median of one value (a member, or what a function gives) of each item.
template <typename Item, typename Value>
[[nodiscard]] double medianOf(const std::vector<Item>& items, const Value& value)
{
    std::vector<double> values;
    values.reserve(items.size());
    for (const Item& item : items) {
        values.push_back(std::invoke(value, item));
    }
    return median(values);
}

} // namespace bench
