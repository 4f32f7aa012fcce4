// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_CTL_HEATPICTURE_H
#define VOLTVK_CTL_HEATPICTURE_H

#include "terminal/Terminal.h"
#include "voltvk/engine/activity/HeatMap.h"

#include <string>
#include <vector>

namespace voltvk::ctl {

/**
 * The heat map of a volume as lines of text, each with its newline: the cells, what their symbols mean, and
 * the totals. The symbol of a cell shows its place and its level of heat; colour only repeats the heat. No
 * line is wider than the terminal, if it has at least 20 columns, nor than 80 columns where there is none.
 * @param chunks what is remembered of the volume
 * @param blocks whether Unicode block elements can be shown; else symbols are ASCII
 */
std::string heatPicture(
    const VolumeRecord& volume, const std::vector<RememberedChunk>& chunks,
    const tvp::terminal::Terminal& terminal, bool blocks);

}  // namespace voltvk::ctl

#endif
