// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_ENGINE_BACKING_TESTEDBACKING_H
#define TESTS_ENGINE_BACKING_TESTEDBACKING_H

#include <cstdint>
#include <memory>
#include <string>

namespace tvp::test {

/** What the tests of pools and volumes do outside of the contract, which depends on the backing. */
class TestedBacking {
public:
  /** The backing of this test program; each program brings its own. */
  static std::unique_ptr<TestedBacking> make();

  TestedBacking() = default;
  virtual ~TestedBacking() = default;
  TestedBacking(const TestedBacking&) = delete;
  TestedBacking& operator=(const TestedBacking&) = delete;

  /** Makes two hard disks, 0 and 1, and two SSDs, 2 and 3, of 2 GiB each, and chooses the backing. */
  virtual void prepare() = 0;
  virtual bool isReal() const = 0;
  /** Reads the first bytes of a chunk of 1 MiB, so that each time counts as one read. */
  virtual void read(std::uint32_t volume, std::uint64_t chunk, std::uint64_t times) = 0;
  /** Writes something else to each of the first chunks of 1 MiB. */
  virtual void fill(std::uint32_t volume, std::uint64_t chunks) = 0;
  virtual bool isFilled(std::uint32_t volume, std::uint64_t chunks) = 0;
  /** What is on the drives, whatever the state says; empty while nothing is. */
  virtual std::string onDrives() = 0;
};

}  // namespace tvp::test

#endif
