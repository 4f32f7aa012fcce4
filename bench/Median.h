// SPDX-License-Identifier: Apache-2.0
#ifndef BENCH_MEDIAN_H
#define BENCH_MEDIAN_H

#include <algorithm>
#include <vector>

namespace bench {

/** @return the middle one of the values (of an even number the greater), 0 without any. */
inline double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values.empty() ? 0.0 : values[values.size() / 2];
}

}  // namespace bench

#endif
