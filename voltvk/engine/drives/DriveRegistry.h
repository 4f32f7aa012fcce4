// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_DRIVES_DRIVEREGISTRY_H
#define VOLTVK_ENGINE_DRIVES_DRIVEREGISTRY_H

#include "voltvk/engine/state/Records.h"

#include <cstdint>
#include <string>
#include <vector>

namespace voltvk {

class Connection;

/** What is wanted of a virtual drive. */
struct VirtualDriveSpec {
  std::uint8_t type = 0;      ///< TvkDeviceType
  std::uint64_t sectors = 0;  ///< of 512 bytes: 2048 (1 MiB) to MAX_DRIVE_SECTORS
  std::string model;          ///< empty for a default
  std::string serial;         ///< empty for a default; else unlike those of the other virtual drives
};

/**
 * The drives of the state and their numbers. A number is given once and kept, also while the drive is
 * away; only when all have been given are those of drives that are gone given again.
 * Works within the caller's transaction. Throws DatabaseError, and Refusal as stated.
 */
class DriveRegistry {
public:
  /** Drives at most, since the identity reports their number in 8 bits. */
  static constexpr std::size_t CAPACITY = 255;

  explicit DriveRegistry(Connection& connection) : m_connection(connection) {}

  /** True when reconcile would change something. */
  bool differs(const std::vector<DriveRecord>& hostDrives);

  /**
   * Records what a scan has found: new drives get numbers, those that are gone are marked, and events
   * report both. Drives beyond CAPACITY are left out.
   */
  void reconcile(const std::vector<DriveRecord>& hostDrives);

  /**
   * Adds a virtual drive.
   * @throws Refusal with a text: size out of range, serial number in use or unfit, too many drives
   * @return its number
   */
  std::uint16_t addVirtual(const VirtualDriveSpec& spec);

  /** Removes a virtual drive. @throws Refusal: unknown, a drive of the machine, or a member of a pool. */
  void removeVirtual(std::uint16_t number);

private:
  bool insert(DriveRecord& drive);
  void update(const DriveRecord& known, const DriveRecord& found);
  int freeNumber();
  void reportChange(const DriveRecord& drive, bool added);

  Connection& m_connection;
};

}  // namespace voltvk

#endif
