// SPDX-License-Identifier: Apache-2.0
#ifndef BENCH_THREADS_H
#define BENCH_THREADS_H

#include <exception>
#include <fstream>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace bench {

/** A number from /proc/self/status, in KiB. @throws std::runtime_error when it is not there */
inline long statusNumber(const std::string& key) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind(key + ":", 0) == 0) {
      return std::stol(line.substr(key.size() + 1));
    }
  }
  throw std::runtime_error("/proc/self/status has no line " + key);
}

/** Runs work on a number of threads at once and waits for all of them. @throws what one of them threw */
template <typename Work>
void onThreads(unsigned int threads, Work work) {
  std::mutex mutex;
  std::exception_ptr failure;
  std::vector<std::thread> workers;
  for (unsigned int i = 0; i < threads; ++i) {
    workers.emplace_back([&] {
      try {
        work();
      } catch (...) {
        const std::lock_guard<std::mutex> lock(mutex);
        failure = std::current_exception();
      }
    });
  }
  for (std::thread& worker : workers) {
    worker.join();
  }
  if (failure != nullptr) {
    std::rethrow_exception(failure);
  }
}

}  // namespace bench

#endif
