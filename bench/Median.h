// SPDX-License-Identifier: Apache-2.0
#ifndef BENCH_MEDIAN_H
#define BENCH_MEDIAN_H

#include <algorithm>
#include <vector>

namespace bench {

/** @return the median of the values (the upper one of an even number), 0 without values. */
inline double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values.empty() ? 0.0 : values[values.size() / 2];
}

}  // namespace bench

#endif
