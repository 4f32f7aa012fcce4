// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_OUTPUT_JSONFORMATTER_H
#define HOST_TVPCIM_OUTPUT_JSONFORMATTER_H

#include "host/tvpcim/output/Formatter.h"

namespace tvp::host::tvpcim {

/**
 * Makes a formatter for JSON: arrays of objects, and objects. Numbers keep every digit, what is unset is
 * null, date-times are ISO 8601, references are the text of their path. Bytes that are no UTF-8 become \xHH
 * in the text.
 */
std::unique_ptr<const Formatter> makeJsonFormatter();

}  // namespace tvp::host::tvpcim

#endif
