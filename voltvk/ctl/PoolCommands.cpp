// SPDX-License-Identifier: Apache-2.0
#include "text/Size.h"
#include "voltvk/ctl/Commands.h"
#include "voltvk/ctl/LongWork.h"
#include "voltvk/ctl/Volumes.h"
#include "voltvk/engine/contract/State.h"
#include "voltvk/engine/contract/StorageGrowth.h"
#include "voltvk/engine/state/Refusal.h"
#include "voltvk/engine/state/SnapshotReader.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace voltvk::ctl {

namespace {

struct PoolOptions {
  std::string pool;
  std::string drive;
  std::string replacement;
};

/** The drive with a number or else a device node. */
DriveRecord findDrive(Connection& connection, const std::string& wanted) {
  const std::vector<DriveRecord> drives = SnapshotReader(connection).configuration().drives;
  const auto found = std::find_if(drives.begin(), drives.end(), [&](const DriveRecord& drive) {
    return std::to_string(drive.number) == wanted || (drive.present && drive.name == wanted);
  });
  require(found != drives.end(), TVK_NO_SUCH_DEVICE, [&] {
    return "there is no drive '" + wanted + "'; give the number or device of one, see `voltvkctl drive list`";
  });
  return *found;
}

void addDrive(const PoolOptions& options, const Context& context) {
  const std::shared_ptr<State> state = context.state();
  PoolRecord pool;
  DriveRecord drive;
  state->read([&](Connection& connection) {
    pool = findPool(connection, options.pool);
    drive = findDrive(connection, options.drive);
  });
  StorageGrowth(*state).addDrive(pool.id, drive.number);
  state->read([&](Connection& connection) { pool = findPool(connection, std::to_string(pool.id)); });
  const std::uint64_t sectors = pool.chunks * pool.chunkSectors;
  context.report(
      {{"pool", pool.name}, {"id", pool.id}, {"drive", drive.number}, {"sectors", sectors}},
      nameOf(drive) + " added to " + nameOf(pool) + ", which has " + sizeText(sectors) + " now");
}

void replaceDrive(const PoolOptions& options, const Context& context) {
  const std::shared_ptr<State> state = context.state();
  PoolRecord pool;
  DriveRecord from;
  DriveRecord to;
  state->read([&](Connection& connection) {
    pool = findPool(connection, options.pool);
    from = findDrive(connection, options.drive);
    to = findDrive(connection, options.replacement);
  });
  {
    const LongWork work;
    StorageGrowth(*state).replaceDrive(
        pool.id, {from.number, to.number}, [&](std::uint64_t moved, std::uint64_t total) {
          return work.goesOn(
              pool.name + ": " + tvp::text::formatSectors(moved) + " of " + tvp::text::formatSectors(total) +
              " moved");
        });
  }
  context.report(
      {{"pool", pool.name}, {"id", pool.id}, {"drive", from.number}, {"replacement", to.number}},
      nameOf(from) + " of " + nameOf(pool) + " replaced by " + nameOf(to));
}

}  // namespace

void addPoolCommands(CLI::App& app, Context& context) {
  CLI::App* pool = app.add_subcommand("pool", "Add drives to pools, replace them");
  pool->require_subcommand(1);
  auto options = std::make_shared<PoolOptions>();
  const auto addNames = [&](CLI::App* command) {
    command->add_option("POOL", options->pool, "Name or number of the pool")->required();
    command->add_option("DRIVE", options->drive, "Number or device of the drive")->required();
  };
  CLI::App* add = pool->add_subcommand("add-drive", "Add a free drive to a pool, with all its room");
  addNames(add);
  add->callback([options, &context] { addDrive(*options, context); });
  CLI::App* replace = pool->add_subcommand(
      "replace-drive", "Move all that a drive of a pool holds to a free drive, which takes its place");
  addNames(replace);
  replace->add_option("NEW", options->replacement, "Number or device of the drive that takes its place")
      ->required();
  replace->callback([options, &context] { replaceDrive(*options, context); });
}

}  // namespace voltvk::ctl
