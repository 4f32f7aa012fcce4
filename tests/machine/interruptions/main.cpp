// SPDX-License-Identifier: Apache-2.0
// Changes of real pools and volumes that are interrupted at each of their steps, which are found by running
// each change once undisturbed. Whatever the interruption was, afterwards there is what was there before the
// change or what there is after it, on the drives and in the state, with the contents of all volumes. usage:
// test_interruptions [--some] KIND... The kinds are those of the script "lvm" beside this file. A kind
// "power-..." ends the machine: what was under way is beside the state, and the next run, with the same
// arguments, goes on. Refuses to run outside the emulated machine.
#include "Interruption.h"
#include "World.h"
#include "machine/inside/Shell.h"
#include "voltvk/engine/contract/VolumeUpkeep.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <stdexcept>

#include <unistd.h>

namespace tvp::test {
namespace {

struct Scenario {
  const char* name;
  unsigned int things;  ///< what there is before
  std::function<void(World&)> change;
  bool isResumed = false;  ///< not undone once it has moved something: the next change completes it
};

void moveChunks(World& world) {
  if (voltvk::VolumeUpkeep(world.state()).runRound(world.idOf(TIERED)).demoted == 0) {
    throw std::runtime_error("no chunk was to be moved");
  }
}

/** In an order in which little has to be made between them. */
const std::vector<Scenario> SCENARIOS = {
    {"make a pool of two drives", 0, [](World& world) { world.make(FAST); }},
    {"make another pool", FAST, [](World& world) { world.make(SLOW); }},
    {"make a tiered volume", FAST | SLOW, [](World& world) { world.make(TIERED); }},
    {"describe a pool", FAST | SLOW | TIERED, [](World& world) { world.describe(FAST, "er"); }},
    {"describe a volume", FAST | SLOW | TIERED, [](World& world) { world.describe(TIERED, " volume"); }},
    {"move chunks", FAST | SLOW | TIERED, moveChunks},
    {"add a drive to a pool", FAST | SLOW | TIERED, [](World& world) { world.extend(); }},
    {"make a tiered volume larger", FAST | SLOW | TIERED, [](World& world) { world.grow(); }},
    {"replace a drive", FAST | SLOW | TIERED, [](World& world) { world.replace(); }, true},
    {"make a cached volume", FAST | SLOW | TIERED, [](World& world) { world.make(CACHED); }},
    {"flush a cached volume", FAST | SLOW | TIERED | CACHED,
     [](World& world) { voltvk::VolumeUpkeep(world.state()).flush(world.idOf(CACHED)); }},
    {"delete a cached volume", FAST | SLOW | TIERED | CACHED, [](World& world) { world.remove(CACHED); }},
    {"delete a tiered volume", FAST | SLOW | TIERED, [](World& world) { world.remove(TIERED); }},
    {"delete a pool", FAST | SLOW, [](World& world) { world.remove(SLOW); }},
    {"delete the last pool", FAST, [](World& world) { world.remove(FAST); }},
};

/** The steps at which an interruption is most delicate: scenario, verb. */
const std::vector<std::pair<std::string, std::string>> SOME = {
    {"make a pool of two drives", "vgcreate"},   {"move chunks", "pvmove"},
    {"make a tiered volume larger", "lvextend"}, {"replace a drive", "pvmove"},
    {"make a cached volume", "lvconvert"},       {"delete a cached volume", "lvremove"},
};

/** What the refusal of a change says, by the kind of the interruption. */
const std::map<std::string, std::string> REASONS = {
    {"refused", "This call was refused by a test"},
    {"hanging", "did not end within 60 s"},
    {"no-report", "did not print a report in JSON"},
};

/** What is under way; survives a power cut. */
struct Progress {
  std::size_t scenario = 0;
  std::size_t kind = 0;
  unsigned int step = 0;
  unsigned int interruptions = 0;
  unsigned int failures = 0;
  bool isCut = false;
  std::string before;
  std::string after;
  Steps steps;
};

class Runner {
public:
  Runner(std::vector<std::string> kinds, bool some) : m_kinds(std::move(kinds)), m_some(some) {}

  /** @return whether everything was as it has to be */
  bool run() {
    load();
    for (; m_now.scenario < SCENARIOS.size(); ++m_now.scenario, m_now.kind = 0) {
      const bool isDelicate = std::any_of(
          SOME.begin(), SOME.end(), [&](const auto& some) { return some.first == scenario().name; });
      if (m_some && !isDelicate) {
        continue;
      }
      if (!m_now.isCut) {
        explore();
      }
      for (; m_now.kind < m_kinds.size(); ++m_now.kind, m_now.step = 0) {
        runKind();
      }
    }
    std::filesystem::remove(PROGRESS);
    std::cout << m_now.interruptions << " interruptions, " << m_now.failures << " failures" << std::endl;
    return m_now.failures == 0;
  }

private:
  static constexpr const char* PROGRESS = "/var/lib/voltvk/interruptions";

  const Scenario& scenario() const { return SCENARIOS[m_now.scenario]; }
  Interruption interruption() const { return {m_kinds[m_now.kind], m_now.step}; }

  void prepare() {
    World world;
    world.become(scenario().things);
    world.heat();
    m_now.before = world.text();
  }

  void change() const {
    World world;
    scenario().change(world);
  }

  /** Runs the change undisturbed. */
  void explore() {
    prepare();
    m_now.steps = findSteps([&] { change(); });
    World world;
    m_now.after = world.text();
    finish("undisturbed", {}, world.complaints(scenario().things));
  }

  void runKind() {
    const std::vector<std::string> steps = interruption().stepsOf(m_now.steps);
    if (m_now.isCut) {
      m_now.isCut = false;
      verify(steps[m_now.step - 1], {});
    }
    while (m_now.step < steps.size()) {
      const std::string& verb = steps[m_now.step++];
      // Waiting for a program that hangs takes long, and one is like another.
      const bool isOneOfMany = interruption().kind == "hanging" && m_now.step != steps.size() / 2;
      if (isOneOfMany || (m_some && !isAmongSome(verb))) {
        continue;
      }
      prepare();
      m_now.isCut = interruption().cutsPower();
      if (m_now.isCut) {
        save();
      }
      const Ending ending = runInterrupted([&] { change(); }, interruption());
      m_now.isCut = false;
      verify(verb, ending);
    }
  }

  bool isAmongSome(const std::string& verb) const {
    return std::find(SOME.begin(), SOME.end(), std::make_pair(std::string(scenario().name), verb)) !=
           SOME.end();
  }

  void verify(const std::string& verb, const Ending& ending) {
    const Interruption done = interruption();
    std::vector<std::string> complaints;
    try {
      World world;
      if (done.kills() || done.cutsPower()) {
        world.settle(done.cutsPower());
      } else if (ending.refusal.find(REASONS.at(done.kind)) == std::string::npos) {
        // A deletion that fails when the data is gone is completed.
        const bool isCompleted = ending.refusal.empty() && m_now.before != m_now.after;
        if (!isCompleted || world.text() != m_now.after) {
          complaints.push_back("the refusal is: " + ending.refusal);
        }
      }
      if (scenario().isResumed) {
        world.settle(false);
      }
      const bool isAsBefore = world.text() == m_now.before;
      const bool isDone = world.text() == m_now.after && (ending.refusal.empty() || scenario().isResumed);
      if (!isAsBefore && !isDone) {
        complaints.push_back("there is " + world.text());
      }
      if (!done.cutsPower() && !ending.wasReached) {
        complaints.emplace_back("the step was not reached");
      }
      const std::vector<std::string> found = world.complaints(scenario().things);
      complaints.insert(complaints.end(), found.begin(), found.end());
    } catch (const std::exception& error) {
      complaints.emplace_back(error.what());
    }
    ++m_now.interruptions;
    finish(done.kind + " " + std::to_string(done.step) + " (" + verb + ")", ending, complaints);
  }

  void finish(const std::string& what, const Ending& ending, const std::vector<std::string>& complaints) {
    const auto time = std::chrono::steady_clock::now() - m_started;
    std::cout << std::chrono::duration_cast<std::chrono::seconds>(time).count() << " s: " << scenario().name
              << ", " << what << ": " << (complaints.empty() ? "good" : "FAILED") << "\n";
    for (const std::string& complaint : complaints) {
      std::cout << "    " << complaint << "\n";
    }
    if (!complaints.empty()) {
      ++m_now.failures;
      std::cout << "    before: " << m_now.before << "\n    after: " << m_now.after
                << "\n    refusal: " << ending.refusal << "\n";
      World::clear();
    }
    std::cout << std::flush;
  }

  void load() {
    std::ifstream file(PROGRESS);
    Progress saved;
    std::size_t lists = 0;
    if (file >> saved.scenario >> saved.kind >> saved.step >> saved.interruptions >> saved.failures) {
      file.ignore();
      std::getline(file, saved.before);
      std::getline(file, saved.after);
      for (std::vector<std::string>* list : {&saved.steps.changes, &saved.steps.syncs}) {
        file >> lists;
        list->resize(lists);
        for (std::string& verb : *list) {
          file >> verb;
        }
      }
      saved.isCut = true;
      m_now = saved;
    }
  }

  void save() const {
    std::ofstream file(PROGRESS);
    file << m_now.scenario << " " << m_now.kind << " " << m_now.step << " " << m_now.interruptions << " "
         << m_now.failures << "\n"
         << m_now.before << "\n"
         << m_now.after << "\n";
    for (const std::vector<std::string>* list : {&m_now.steps.changes, &m_now.steps.syncs}) {
      file << list->size();
      for (const std::string& verb : *list) {
        file << " " << verb;
      }
      file << "\n";
    }
    file.close();
    ::sync();
  }

  const std::vector<std::string> m_kinds;
  const bool m_some;
  const std::chrono::steady_clock::time_point m_started = std::chrono::steady_clock::now();
  Progress m_now;
};

}  // namespace
}  // namespace tvp::test

int main(int count, char** arguments) {
  std::vector<std::string> kinds(arguments + 1, arguments + count);
  const bool some = !kinds.empty() && kinds.front() == "--some";
  kinds.erase(kinds.begin(), kinds.begin() + (some ? 1 : 0));
  if (!tvp::test::isEmulatedMachine()) {
    std::cerr << "this test writes to drives; run it with tests/machine/run\n";
    return 2;
  }
  try {
    return tvp::test::Runner(kinds, some).run() ? 0 : 1;
  } catch (const std::exception& error) {
    std::cerr << "test_interruptions: " << error.what() << "\n";
    return 2;
  }
}
