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
CLI::App& addObjectVerb(
    CLI::App& family, Tool& tool, const ObjectKind& kind, const char* name, const char* summary,
    std::function<void(Tool& tool, const std::string& object)> action);

/** Help texts of options that several verbs have. @param noun "pool" or "volume" */
std::string helpOnName(const std::string& noun);
std::string helpOnDescription();

/** The name that the storage library keeps where it takes what fits of a longer one. */
std::string_view keptName(const std::string& name);

/** The number of a drive that is given by number or name. @throws UsageError above LARGEST_DRIVE */
std::uint8_t driveNumber(Tool& tool, const std::string& text);

/** "yes", or why the drive cannot join a pool: "no: has partitions". */
std::string freedomOf(const Instance& drive);

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

/** What a change is about. */
struct ChangedObject {
  const ObjectKind& kind;
  std::uint32_t number;
  const char* participle;       ///< "created"
  std::vector<Column> columns;  ///< that show it to people; none: it is not shown
  std::string title = {};       ///< as titleOf; to be given for what is gone afterwards
};

/**
 * Prints the answer of a change if the change is there: an exception inside the storage library reaches a
 * client as success. A dry run prints the object as it would be, with its members.
 * @param expectation what is wrong otherwise; @throws OperationError unless done
 */
void printChange(
    Tool& tool, const ServiceAnswer& answer, const ChangedObject& object, bool done,
    const std::string& expectation);

/** "pool 2 (fast)"; only the number where the object is not shown to clients. */
std::string titleOf(Tool& tool, const ObjectKind& kind, std::uint32_t number);

/** Puts together what a person is asked: what is deleted and what goes with it. @param number the object's */
using DeletionQuestion = std::string (*)(Tool& tool, std::uint32_t number);

/**
 * Adds the verb that deletes an object of a kind. A person on a terminal is asked first, unless there is
 * --yes or it is a dry run; who cannot be asked is not.
 * @param method of the tier service
 */
void addDeletion(
    CLI::App& family, Tool& tool, const ObjectKind& kind, const char* summary, const char* method,
    DeletionQuestion question);

/** Help on the sizes of what is taken from something that has limited room. */
constexpr const char* SHARE_HELP = "SIZE is a size, max, or a share of the room such as 25%.";

/** Whether a text is "max" or a percentage, and not a size. */
bool isShare(const std::string& text);

/**
 * A size, "max" or a percentage of the room that there is.
 * @param room in sectors; what is not given as a size is cut to whole chunks of it
 * @param where what has the room: "pool 2 (fast)"
 * @throws UsageError, text::SizeError; OperationError when there is no room
 */
std::uint64_t
sectorsOfShare(const std::string& text, std::uint64_t room, std::uint64_t chunk, const std::string& where);

}  // namespace tvp::host::tvpcim

#endif
