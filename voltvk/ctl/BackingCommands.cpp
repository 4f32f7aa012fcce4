// SPDX-License-Identifier: Apache-2.0
#include "voltvk/ctl/Commands.h"
#include "voltvk/engine/contract/BackingAdministration.h"
#include "voltvk/engine/state/Refusal.h"

#include <CLI/CLI.hpp>

namespace voltvk::ctl {

namespace {

struct BackingOptions {
  BackingChoice choice;
  bool repair = false;
};

void showBacking(const Context& context) {
  const BackingChoice choice = context.state()->snapshot()->configuration().backing;
  const std::string name = nameOf(choice.kind);
  context.report(
      {{"backing", name}, {"group", choice.isReal() ? Json(choice.group) : Json(nullptr)}},
      choice.isReal() ? name + ", volume group " + choice.group : name);
}

void chooseBacking(const BackingChoice& choice, const Context& context) {
  BackingAdministration(*context.state()).choose(choice);
  showBacking(context);
}

std::string linesOf(const std::vector<std::string>& sentences) {
  std::string text;
  for (const std::string& sentence : sentences) {
    text += (text.empty() ? "" : "\n") + sentence;
  }
  return text;
}

void check(bool repair, const Context& context) {
  const BackingReport report = BackingAdministration(*context.state()).check(repair);
  const std::size_t count = report.differences.size();
  std::vector<std::string> lines = report.repairs;
  lines.insert(lines.end(), report.differences.begin(), report.differences.end());
  if (lines.empty()) {
    lines.emplace_back("the state and the drives agree");
  }
  context.report({{"differences", report.differences}, {"repairs", report.repairs}}, linesOf(lines));
  require(count == 0, TVK_BACKING_FAILED, [&] {
    return counted(count, "difference") + " between the state and the drives" +
           (repair ? " cannot be repaired without touching data; see the manual page"
                   : "; repair what can be with `voltvkctl check --repair`");
  });
}

void recover(const Context& context) {
  const RecoveredState recovered = BackingAdministration(*context.state()).recover();
  context.report(
      {{"pools", recovered.pools}, {"volumes", recovered.volumes}},
      counted(recovered.pools, "pool") + " and " + counted(recovered.volumes, "volume") +
          " found on the drives");
}

}  // namespace

void addBackingCommands(CLI::App& app, Context& context) {
  auto options = std::make_shared<BackingOptions>();
  CLI::App* backing = app.add_subcommand(
      "backing", "Show or choose where pools and volumes are: in the books only, or on the drives");
  backing->require_subcommand(0, 1);
  backing->preparse_callback([options](std::size_t) { *options = {}; });
  backing->final_callback([backing, &context] {
    if (backing->get_subcommands().empty()) {
      showBacking(context);
    }
  });
  backing->add_subcommand("books", "Pools and volumes are book-keeping; no drive is written to")
      ->callback([&context] { chooseBacking({}, context); });
  CLI::App* lvm =
      backing->add_subcommand("lvm", "Pools and volumes are on the drives, through the Linux volume manager");
  lvm->add_option("--group", options->choice.group, "Name of the volume group (default tvp)");
  lvm->callback([options, &context] { chooseBacking({BackingKind::Lvm, options->choice.group}, context); });

  CLI::App* checking = app.add_subcommand("check", "Compare the state with what is on the drives");
  checking->add_flag("--repair", options->repair, "Repair what can be repaired without touching data");
  checking->callback([options, &context] { check(options->repair, context); });

  app.add_subcommand("recover", "Rebuild a lost state from what is recorded on the drives")
      ->callback([&context] { recover(context); });
}

}  // namespace voltvk::ctl
