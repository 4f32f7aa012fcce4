// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_DRIVES_DRIVEREGISTRY_H
#define VOLTVK_ENGINE_DRIVES_DRIVEREGISTRY_H

#include "voltvk/engine/state/Records.h"

#include <cstdint>
#include <string>
#include <vector>

namespace voltvk {

class Connection;

/** The virtual drive that is wanted. */
struct VirtualDriveSpec {
  std::uint8_t type = 0;      ///< TvkDeviceType
  std::uint64_t sectors = 0;  ///< of 512 bytes: 2048 (1 MiB) to MAX_DRIVE_SECTORS
  std::string model;          ///< empty for a default
  std::string serial;         ///< empty for a default; else unique among the virtual drives
};

/**
 * The drives of the state and their numbers. A number is assigned once and kept, even while the drive is
 * absent; only when all have been assigned are the numbers of absent drives reused. Works within the caller's
 * transaction. Throws DatabaseError, and Refusal as stated.
 */
class DriveRegistry {
public:
  /** Maximum number of drives, since the identity reports their count in 8 bits. */
  static constexpr std::size_t CAPACITY = 255;

  explicit DriveRegistry(Connection& connection) : m_connection(connection) {}

  /** True if reconcile would change something. */
  bool differs(std::vector<DriveRecord> hostDrives);

  /**
   * Records what a scan has found: new drives get numbers, missing drives are marked, and events report both.
   * Drives beyond CAPACITY are left out, which an event reports and leftOut counts.
   */
  void reconcile(std::vector<DriveRecord> hostDrives);

  /**
   * Forgets what is stored on drives that a pool is being made of: it is the pool's own by now, and a scan in
   * another thread or process may have recorded it already.
   */
  void forgetContents(const std::vector<std::uint16_t>& drives);

  /** How many drives of the machine the last reconcile left out. */
  std::size_t leftOut();

  /**
   * Adds a virtual drive.
   * @throws Refusal with a text: size out of range, serial number in use or invalid, too many drives
   * @return its number
   */
  std::uint16_t addVirtual(const VirtualDriveSpec& spec);

  /**
   * Removes a virtual drive. @throws Refusal if it is unknown, a drive of the machine, or a member of a pool.
   */
  void removeVirtual(std::uint16_t number);

private:
  bool insert(DriveRecord& drive);
  void update(const DriveRecord& known, const DriveRecord& found);
  int freeNumber();
  void reportLeftOut(std::size_t count);
  void reportChange(const DriveRecord& drive, bool added);

  Connection& m_connection;
};

}  // namespace voltvk

#endif
