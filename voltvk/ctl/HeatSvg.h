// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_CTL_HEATSVG_H
#define VOLTVK_CTL_HEATSVG_H

#include "voltvk/engine/activity/HeatMap.h"

#include <string>
#include <vector>

namespace voltvk::ctl {

/**
 * The heat map of a volume as an SVG document, without an XML declaration, so that it can stand in a page
 * too: self-contained, without scripts, with colours for light and dark pages, and with a title and a
 * description for those who do not see it. Fill shows the heat, outlines show the place.
 * @param chunks what is remembered of the volume
 */
std::string heatSvg(const VolumeRecord& volume, const std::vector<RememberedChunk>& chunks);

}  // namespace voltvk::ctl

#endif
