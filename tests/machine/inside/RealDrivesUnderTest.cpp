// SPDX-License-Identifier: Apache-2.0
#include "engine/backing/TestedBacking.h"
#include "machine/inside/Shell.h"
#include "support/Storage.h"
#include "voltvk/engine/contract/BackingAdministration.h"
#include "voltvk/engine/state/FileDescriptor.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

namespace tvp::test {

namespace {

/** The drives of the emulated machine, written to past the page cache, so that the kernel counts every
 * access. */
class RealDrivesUnderTest : public TestedBacking {
public:
  bool isReal() const override { return true; }
  void prepare() override {
    if (!isEmulatedMachine()) {
      throw std::runtime_error("this test writes to drives; run it with tests/machine/run");
    }
    voltvk::BackingAdministration(*Storage::state()).choose({voltvk::BackingKind::Lvm, "tvp"});
  }
  void read(std::uint32_t volume, std::uint64_t chunk, std::uint64_t times) override {
    const voltvk::FileDescriptor device = open(volume, O_RDONLY);
    for (; times > 0; --times) {
      require(::pread(device.get(), m_block, sizeof m_block, addressOf(chunk)));
    }
  }
  void fill(std::uint32_t volume, std::uint64_t chunks) override {
    const voltvk::FileDescriptor device = open(volume, O_WRONLY);
    for (std::uint64_t chunk = 0; chunk < chunks; ++chunk) {
      *reinterpret_cast<std::uint64_t*>(m_block) = contentOf(volume, chunk);
      require(::pwrite(device.get(), m_block, sizeof m_block, addressOf(chunk)));
    }
  }
  bool isFilled(std::uint32_t volume, std::uint64_t chunks) override {
    bool isAsWritten = true;
    for (std::uint64_t chunk = 0; chunk < chunks; ++chunk) {
      read(volume, chunk, 1);
      isAsWritten = isAsWritten && *reinterpret_cast<std::uint64_t*>(m_block) == contentOf(volume, chunk);
    }
    return isAsWritten;
  }
  std::string onDrives() override {
    const std::string found = shell("blkid --probe /dev/sd[abcd]");
    return found == "(status 2)" ? "" : found + shell("lvm pvs -a -o+tags; lvm lvs -a -o+tags,seg_pe_ranges");
  }

private:
  static voltvk::FileDescriptor open(std::uint32_t volume, int flags) {
    return voltvk::FileDescriptor(
        ::open(("/dev/tvp/vol" + std::to_string(volume)).c_str(), flags | O_DIRECT));
  }
  static off_t addressOf(std::uint64_t chunk) { return static_cast<off_t>(chunk * MIB * 512); }
  static std::uint64_t contentOf(std::uint32_t volume, std::uint64_t chunk) {
    return std::uint64_t{volume} * 1000003U + chunk;
  }
  static void require(ssize_t length) {
    if (length != sizeof m_block) {
      throw std::runtime_error(std::string("a volume cannot be accessed: ") + std::strerror(errno));
    }
  }

  alignas(4096) char m_block[4096] = {};
};

}  // namespace

std::unique_ptr<TestedBacking> TestedBacking::make() {
  return std::make_unique<RealDrivesUnderTest>();
}

}  // namespace tvp::test
