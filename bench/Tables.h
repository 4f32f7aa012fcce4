// SPDX-License-Identifier: Apache-2.0
#ifndef BENCH_TABLES_H
#define BENCH_TABLES_H

namespace bench {

/**
 * Runs every measurement in child processes on scratch states, which are removed at the end, and prints the
 * tables. @throws std::runtime_error when a measurement fails
 */
void printTables();

}  // namespace bench

#endif
