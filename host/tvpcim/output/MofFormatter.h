// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_OUTPUT_MOFFORMATTER_H
#define HOST_TVPCIM_OUTPUT_MOFFORMATTER_H

#include "host/tvpcim/output/Formatter.h"

namespace tvp::host::tvpcim {

/**
 * Makes a formatter for MOF: instance declarations that a MOF compiler reads. Paths are comments, embedded
 * instances are texts that hold MOF, and the nodes of a tree follow each other with their "Level".
 */
std::unique_ptr<const Formatter> makeMofFormatter();

}  // namespace tvp::host::tvpcim

#endif
