// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_REMOTE_VOLUMEHEAT_H
#define HOST_TVPCIM_REMOTE_VOLUMEHEAT_H

#include "host/tvpcim/storage/StorageTool.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>

namespace tvp::host::tvpcim {

/**
 * The heat of a volume in few cells, each of as many chunks as the others but the last.
 * @param heat what voltvkctl says of the volume
 * @return its totals, and "cells": for each the number of its chunks, how many of them are on SSD and how
 * many are hot, and the heat of its hottest
 */
nlohmann::ordered_json heatCells(const nlohmann::ordered_json& heat, std::size_t most);

/** The heat of volumes for the page: texts of JSON that are kept for some time, since each takes a process.
 * Thread-safe. */
class VolumeHeat {
public:
  using Clock = std::chrono::steady_clock;

  static constexpr std::size_t CELLS = 128;  ///< at most
  static constexpr std::chrono::seconds KEPT{4};
  /** Between two readings, of whatever volumes. */
  static constexpr std::chrono::milliseconds PAUSE{500};

  /**
   * What is known of the volume, which is read when that is too old.
   * @return JSON, with "reason" where there is no heat; empty when it is not known yet: ask again later
   */
  std::string of(std::uint32_t volume);

private:
  struct Known {
    std::string text;
    Clock::time_point until;
  };

  std::string read(std::uint32_t volume);

  std::mutex m_reading;  ///< held by whoever reads, which takes its time
  StorageTool m_tool;
  std::mutex m_mutex;  ///< guards what follows
  std::map<std::uint32_t, Known> m_known;
  Clock::time_point m_next;  ///< when another reading may begin
};

}  // namespace tvp::host::tvpcim

#endif
