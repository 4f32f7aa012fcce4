// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_INCLUDE_VOLTVK_LOGICALDEVICE_H
#define VOLTVK_INCLUDE_VOLTVK_LOGICALDEVICE_H

#include "voltvk/RaidObject.h"

#include <cstdint>

/** What a drive is made of. The tier level of a pool follows from it: 1 hard disk, 3 SSD. */
enum TvkDeviceType : std::uint8_t { TVK_DEVICE_HDD = 1, TVK_DEVICE_SSD = 2 };

/** Where a drive comes from and how it is used, as bits of its property code. */
enum TvkDeviceProperty : std::uint8_t {
  TVK_PROPERTY_HOST = 1,     ///< a block device of this machine
  TVK_PROPERTY_VIRTUAL = 2,  ///< created with `voltvkctl drive add`
  TVK_PROPERTY_REMOVABLE = 4,
  TVK_PROPERTY_MOUNTED = 8,  ///< mounted, used for swap, or held by another block device
  TVK_PROPERTY_READ_ONLY = 16,
  TVK_PROPERTY_UNSUITABLE = 32  ///< holds something that is not a pool's, or cannot store what a pool would
};

/** How a drive is attached. */
enum TvkInterfaceType : std::uint8_t {
  TVK_INTERFACE_UNKNOWN = 0,
  TVK_INTERFACE_SATA = 1,
  TVK_INTERFACE_SAS = 2,  ///< SCSI of any transport that is not SATA
  TVK_INTERFACE_NVME = 3,
  TVK_INTERFACE_VIRTIO = 4,
  TVK_INTERFACE_USB = 5,
  TVK_INTERFACE_VIRTUAL = 6
};

/** State of a drive. */
enum TvkDeviceStatus : std::uint8_t { TVK_DEVICE_ONLINE = 1, TVK_DEVICE_MISSING = 2 };

/**
 * A drive that pools can be made of. Texts are UTF-8, empty when unknown, never null, and valid as long as
 * the object exists.
 */
class VOLTVK_EXPORT LogicalDevice : public RaidObject {
public:
  ~LogicalDevice() override;

  virtual const char* getDeviceName() const = 0;  ///< for example "/dev/sda"
  virtual const char* getSerialNumber() const = 0;
  virtual const char* getWwid() const = 0;
  virtual const char* getVendor() const = 0;
  virtual const char* getModel() const = 0;
  virtual std::uint64_t getCapacityInSectors() const = 0;  ///< sectors of 512 bytes
  virtual std::uint16_t getDeviceNumber() const = 0;   ///< 0 to TVK_LARGEST_DEVICE_NUMBER, given once, kept
  virtual std::uint8_t getDeviceType() const = 0;      ///< TvkDeviceType
  virtual std::uint8_t getDeviceProperty() const = 0;  ///< bits of TvkDeviceProperty
  virtual bool isBootable() const = 0;                 ///< holds the file system of "/"
  virtual bool hasPartition() const = 0;               ///< has at least one partition
  virtual bool isUsed() const = 0;                     ///< a member of a pool
  virtual std::uint8_t getInterfaceType() const = 0;   ///< TvkInterfaceType
  virtual std::uint8_t getStatus() const = 0;          ///< TvkDeviceStatus
  /** Why it cannot join a pool, as the end of a sentence about it: "has partitions"; empty for a free drive.
   */
  virtual const char* getObstacle() const = 0;
  /** What is wrong with it, if it is in a pool: "drive 3 (/dev/sdb) is missing"; empty while it is in order.
   */
  virtual const char* getTrouble() const = 0;
};

#endif
