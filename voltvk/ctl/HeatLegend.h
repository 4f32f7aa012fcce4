// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_CTL_HEATLEGEND_H
#define VOLTVK_CTL_HEATLEGEND_H

#include "voltvk/engine/activity/HeatMap.h"

#include <string>
#include <vector>

namespace voltvk::ctl {

/** A statement about a heat map with the word that it is listed under. */
struct HeatFact {
  std::string subject;  ///< "cell", "SSD", "hot" ...
  std::string text;
};

/*
 * The texts of a picture of a heat map, whatever it is drawn with. Names of volumes are as recorded: what
 * shows them has to escape them.
 */

/** "tiered" or "cached". */
const char* typeName(const VolumeRecord& volume);
/** The volume, its type and its parts. */
std::string heatTitle(const HeatMap& map);
/** What a cell stands for, and the totals. */
std::vector<HeatFact> heatFacts(const HeatMap& map);
/** The places that cells of the map can have, in the order of the enumeration. */
std::vector<HeatCell::Place> placesOf(const HeatMap& map);
/** At most 7 letters. */
const char* placeName(const HeatMap& map, HeatCell::Place place);
/** A number in at most 4 characters, rounded down: "9999", "10k", "4M". */
std::string shortNumber(std::uint64_t number);

}  // namespace voltvk::ctl

#endif
