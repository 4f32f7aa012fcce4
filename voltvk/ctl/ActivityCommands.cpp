// SPDX-License-Identifier: Apache-2.0
#include "voltvk/ctl/Commands.h"
#include "voltvk/ctl/Volumes.h"
#include "voltvk/engine/activity/PolicyEngine.h"
#include "voltvk/engine/activity/VolumeActivity.h"
#include "voltvk/engine/contract/State.h"
#include "voltvk/engine/contract/VolumeUpkeep.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <stdexcept>

namespace voltvk::ctl {

namespace {

struct IoOptions {
  std::string volume;
  IoPattern pattern;
};

void playIo(const IoOptions& options, const Context& context) {
  if (options.pattern.reads + options.pattern.writes == 0) {
    throw std::invalid_argument("nothing to play; give --reads or --writes");
  }
  const std::shared_ptr<State> state = context.state();
  require(
      !state->backing()->isReal(), TVK_NOT_POSSIBLE_HERE,
      "volumes are real: their counters tell what programs read and write; use a program such as fio on the "
      "device of the volume");
  VolumeRecord volume;
  std::optional<IoReplay> replay;
  state->read([&](Connection& connection) {
    volume = findVolume(connection, options.volume);
    replay.emplace(connection, volume, options.pattern);
  });
  bool more = true;
  while (more) {
    state->change([&](Connection& connection) { more = replay->recordNext(connection); });
  }
  d_ioctl_user_stat statistics{};
  state->read([&](Connection& connection) { readStatistics(connection, volume, statistics); });
  const std::string& name = volume.name;
  context.report(
      {{"volume", name},
       {"reads", options.pattern.reads},
       {"writes", options.pattern.writes},
       {"totalReads", statistics.readIoCount},
       {"totalWrites", statistics.writeIoCount},
       {"totalSsdReads", statistics.ssdReadIoCount},
       {"totalSsdWrites", statistics.ssdWriteIoCount}},
      "volume " + name + ": " + std::to_string(options.pattern.reads) + " reads and " +
          std::to_string(options.pattern.writes) + " writes played");
}

void setPolicy(bool running, const Context& context) {
  context.state()->change([&](Connection& connection) { PolicyEngine(connection).setRunning(running); });
  const std::string shown = running ? "running" : "stopped";
  context.report({{"policy", shown}}, "the policy engine is " + shown);
}

std::string sentenceOf(const VolumeRecord& volume, const RoundResult& round, bool dryRun) {
  return "volume " + volume.name + ": " + std::to_string(round.promoted) +
         (dryRun ? " chunks would be moved to the SSD pool" : " chunks moved to the SSD pool");
}

/** Runs a round for every volume, also after one that failed, since others may be able to move chunks. */
void runPolicy(bool isPlanWanted, const Context& context) {
  const bool dryRun = isPlanWanted || context.isDryRun;
  const std::shared_ptr<State> state = context.state();
  const std::shared_ptr<const Snapshot> snapshot = state->snapshot();
  const bool running = snapshot->configuration().policyRunning;
  Json list = Json::array();
  std::string text;
  std::exception_ptr failure;
  for (const VolumeRecord& volume : snapshot->configuration().volumes) {
    try {
      const RoundResult round = VolumeUpkeep(*state).runRound(volume.id, dryRun);
      if (round.promoted > 0) {
        list.push_back({{"volume", volume.name}, {"id", volume.id}, {"chunks", round.promoted}});
        text += (text.empty() ? "" : "\n") + sentenceOf(volume, round, dryRun);
      }
    } catch (const Refusal& refusal) {
      if (refusal.status() != TVK_NO_SUCH_VOLUME && failure == nullptr) {  // else deleted meanwhile
        failure = std::current_exception();
      }
    }
  }
  if (text.empty()) {
    text = running
               ? "no chunk is hot enough to be moved"
               : "the policy engine is stopped, so nothing was moved; start it with `voltvkctl policy start`";
  }
  context.report({{"policy", running ? "running" : "stopped"}, {dryRun ? "planned" : "moved", list}}, text);
  if (failure != nullptr) {
    std::rethrow_exception(failure);
  }
}

}  // namespace

void addIoCommand(CLI::App& app, Context& context) {
  auto options = std::make_shared<IoOptions>();
  CLI::App* io = app.add_subcommand("io", "Play reads and writes against a volume");
  io->add_option("VOLUME", options->volume, "Name or number of the volume")->required();
  const CLI::Range count(std::uint64_t{0}, IoReplay::MAX_OPERATIONS);
  io->add_option("--reads", options->pattern.reads, "Number of reads, up to 1000000")->check(count);
  io->add_option("--writes", options->pattern.writes, "Number of writes, up to 1000000")->check(count);
  CLI::Option* sequential =
      io->add_flag("--sequential", options->pattern.sequential, "Access the chunks in order, from the first");
  io->add_flag("--random", "Access any chunk (default)")->excludes(sequential);
  io->add_option(
        "--hot", options->pattern.hotPercent,
        "Percentage that goes to the hot area, the first 16 chunks of the volume")
      ->check(CLI::Range(0, 100));
  io->add_option("--seed", options->pattern.seed, "Seed of the random choice of chunks (default 1)");
  io->callback([options, &context] { playIo(*options, context); });
}

void addPolicyCommands(CLI::App& app, Context& context) {
  CLI::App* policy =
      app.add_subcommand("policy", "Control the policy engine, which moves hot chunks to SSDs");
  policy->require_subcommand(1);
  policy->add_subcommand("start", "Start it")->callback([&context] { setPolicy(true, context); });
  policy->add_subcommand("stop", "Stop it")->callback([&context] { setPolicy(false, context); });
  auto dryRun = std::make_shared<bool>(false);
  CLI::App* round = policy->add_subcommand("run", "Run one round");
  round->add_flag("--dry-run", *dryRun, "Only say what would be moved");
  round->callback([dryRun, &context] { runPolicy(*dryRun, context); });
  policy->add_subcommand("status", "Print running or stopped")->callback([&context] {
    const char* shown = context.state()->snapshot()->configuration().policyRunning ? "running" : "stopped";
    context.output.write({{"policy", shown}}, shown);
  });
}

}  // namespace voltvk::ctl
