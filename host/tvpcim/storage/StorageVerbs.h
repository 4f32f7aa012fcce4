// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_STORAGE_STORAGEVERBS_H
#define HOST_TVPCIM_STORAGE_STORAGEVERBS_H

#include "host/tvpcim/Commands.h"

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

// What the verbs on drives, pools and volumes have in common.
namespace tvp::host::tvpcim {

/** Methods name drives, and count them, in 8 bits. */
constexpr std::uint32_t LARGEST_DRIVE = std::numeric_limits<std::uint8_t>::max();

/** Adds a verb whose one argument names an object: "POOL". */
void addObjectVerb(
    CLI::App& family, Tool& tool, const ObjectKind& kind, const char* name, const char* summary,
    std::function<void(Tool& tool, const std::string& object)> action);

/** Help texts of options that several verbs have. @param noun "pool" or "volume" */
std::string helpOnName(const std::string& noun);
std::string helpOnDescription();

/** The name that the storage library keeps where it takes what fits of a longer one. */
std::string_view keptName(const std::string& name);

/** The number of a drive that is given by number or name. @throws UsageError above LARGEST_DRIVE */
std::uint8_t driveNumber(Tool& tool, const std::string& text);

/** Prints all objects of a kind. @throws OperationError when they cannot be read */
void printAll(Tool& tool, const ObjectKind& kind, std::vector<Column> columns);
/** Prints the members of an object. @throws OperationError when there is no such object */
void printMembers(Tool& tool, const ObjectKind& kind, const std::string& object, std::vector<Column> columns);

/**
 * Prints one object with its members; people get the cells of the columns instead of the properties.
 * @throws OperationError when there is no such object
 */
void printOne(
    Tool& tool, const ObjectKind& kind, const std::string& object, const std::vector<Column>& columns);

/** What a method of the tier service answered. */
struct ServiceAnswer {
  Instance record;   ///< the answer as one object, named after the method
  std::string hint;  ///< what the provider remarked; empty when it did not
};

/** Calls a method of the tier service. @throws OperationError with a hint at the reason */
ServiceAnswer callService(Tool& tool, const std::string& method, const Arguments& arguments);
/** The same for one pool or volume: its identifier is the first argument and is added to the answer. */
ServiceAnswer callService(
    Tool& tool, const std::string& method, const ObjectKind& kind, std::uint32_t number,
    const Arguments& others = {});

/**
 * Prints the answer of a change if the change is there: an exception inside the storage library reaches a
 * client as success. @param expectation what is wrong otherwise; @throws OperationError unless done
 */
void printChange(Tool& tool, const ServiceAnswer& answer, bool done, const std::string& expectation);

}  // namespace tvp::host::tvpcim

#endif
