#pragma once

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

} // namespace bench
