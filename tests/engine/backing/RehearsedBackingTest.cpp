// SPDX-License-Identifier: Apache-2.0
// A dry run on real drives refuses what the change itself would refuse.
#include "voltvk/engine/backing/RehearsedBacking.h"

#include "engine/EngineFixture.h"
#include "voltvk/engine/backing/books/BooksBacking.h"
#include "voltvk/engine/state/Refusal.h"

using namespace tvp::test;
using voltvk::Step;

namespace {

/** Drives that have a volume 7 already. */
class Drives : public voltvk::BooksBacking {
public:
  void requireUnknown(const std::vector<voltvk::Intent>& steps, const voltvk::Configuration&) override {
    voltvk::require(steps.front().object != 7, TVK_BACKING_FAILED, "volume 7 is on the drives already");
  }
};

TEST_F(EngineTest, ADryRunRefusesDrivesAndNumbersThatAreTaken) {
  voltvk::RehearsedBacking backing(std::make_shared<Drives>(), std::make_shared<voltvk::Rehearsal>());
  voltvk::Configuration configuration;
  configuration.drives.resize(2);
  configuration.drives[1].number = 1;
  configuration.drives[0].name = configuration.drives[1].name = "/dev/gone";
  const std::vector<std::pair<voltvk::Intent, TvkStatus>> cases = {
      {{Step::MakeVolume, 7, {}}, TVK_BACKING_FAILED},  {{Step::MakePool, 1, {0}}, TVK_NO_SUCH_DEVICE},
      {{Step::ExtendPool, 1, {1}}, TVK_NO_SUCH_DEVICE}, {{Step::ReplaceDrive, 1, {0, 1}}, TVK_NO_SUCH_DEVICE},
      {{Step::ReplaceDrive, 1, {0}}, TVK_OK},           {{Step::RemovePool, 1, {}}, TVK_OK}};
  for (const auto& [intent, status] : cases) {
    TvkStatus found = TVK_OK;
    try {
      backing.requireUnknown({intent}, configuration);
    } catch (const voltvk::Refusal& refusal) {
      found = refusal.status();
    }
    EXPECT_EQ(found, status) << static_cast<unsigned int>(intent.step);
  }
}

}  // namespace
