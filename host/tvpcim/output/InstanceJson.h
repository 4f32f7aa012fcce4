// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_OUTPUT_INSTANCEJSON_H
#define HOST_TVPCIM_OUTPUT_INSTANCEJSON_H

#include "host/schema/Value.h"

#include <nlohmann/json.hpp>

#include <vector>

namespace tvp::host::tvpcim {

/**
 * An instance as a JSON object of its properties: numbers keep every digit, what is unset is null, date-times
 * are ISO 8601, references are the text of their path. Bytes that are not UTF-8 become \xHH in the text.
 */
nlohmann::ordered_json toJson(const Instance& instance);
/** An array of such objects. */
nlohmann::ordered_json toJson(const std::vector<Instance>& instances);

}  // namespace tvp::host::tvpcim

#endif
