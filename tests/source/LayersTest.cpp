// SPDX-License-Identifier: Apache-2.0
// A layer includes what lies below it and nothing else, so that it can be understood, tested and replaced
// alone.
#include "SourceTree.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tvp::test {
namespace {

struct Layer {
  std::string path;               ///< a directory, or a single file in a directory of a higher layer
  std::vector<std::string> sees;  ///< whose headers it includes, besides its own
};

using Paths = std::vector<std::string>;

Paths operator+(Paths left, const Paths& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

// What the rows below share: everything under a step is seen from the step above it.
const Paths FRAMEWORK = {"text", "oslib", "CIM/Framework"};
const Paths SCHEMA = {"text", "standard/cmpi", "host/schema"};
const Paths HOST = SCHEMA + Paths{"host/broker", "host/provider"};
const Paths CIMXML = HOST + Paths{"host/cimxml/message"};
const Paths OUTPUT =
    HOST + Paths{"terminal", "host/tvpcim/Failure.h", "host/tvpcim/Options.h", "host/tvpcim/output"};
const Paths TOOL = OUTPUT + Paths{
                                "host/tvpcim/InstalledFiles.h", "host/tvpcim/Session.h",
                                "host/tvpcim/Inventory.h", "host/tvpcim/Tool.h", "host/tvpcim/Commands.h"};
const Paths STATE = {"text", "voltvk/include", "voltvk/engine/state"};
const Paths RULES = STATE + Paths{"voltvk/engine/drives", "voltvk/engine/rules"};
const Paths BACKING = RULES + Paths{"voltvk/engine/backing"};
const Paths ENGINE =
    BACKING + Paths{"voltvk/engine/activity", "voltvk/engine/changes", "voltvk/engine/contract"};

/** What is no layer: it may include everything, and no layer includes it. */
const Paths TOOLS_AND_TESTS = {"tests", "fuzz", "bench", "cmake"};

/** The layers, lowest first: a row names rows above it only. */
const std::vector<Layer>& layers() {
  static const std::vector<Layer> rows = {
      {"text", {}},
      {"terminal", {"text"}},
      {"standard/cmpi", {}},
      {"voltvk/include", {}},
      // The provider.
      {"oslib", {"text"}},
      {"CIM/Framework", {"text", "oslib"}},
      {"backend", FRAMEWORK + Paths{"voltvk/include"}},
      {"providers", FRAMEWORK + Paths{"voltvk/include", "backend"}},
      {"cmpi", FRAMEWORK + Paths{"standard/cmpi", "backend", "providers"}},
      // The storage library.
      {"voltvk/allocation", {"voltvk/include"}},
      {"voltvk/engine/state", {"text", "voltvk/include"}},
      {"voltvk/engine/drives", STATE},
      {"voltvk/engine/rules", STATE + Paths{"voltvk/engine/drives"}},
      {"voltvk/engine/backing", RULES},
      {"voltvk/engine/activity", BACKING},
      {"voltvk/engine/changes", BACKING + Paths{"voltvk/engine/activity"}},
      {"voltvk/engine/contract", BACKING + Paths{"voltvk/engine/activity", "voltvk/engine/changes"}},
      {"voltvk/ctl", ENGINE + Paths{"terminal"}},
      // The host. It meets the provider only through the functions that object managers call.
      {"host/schema", {"text", "standard/cmpi"}},
      {"host/broker", SCHEMA},
      {"host/provider", SCHEMA + Paths{"host/broker"}},
      {"host/cimxml/message", SCHEMA},
      {"host/cimxml/indications", CIMXML},
      {"host/cimxml/client", CIMXML},
      {"host/cimxml/server", CIMXML + Paths{"host/cimxml/indications"}},
      {"host/tvpcim/Failure.h", {}},
      {"host/tvpcim/Options.h", {}},
      {"host/tvpcim/output", HOST + Paths{"terminal", "host/tvpcim/Failure.h", "host/tvpcim/Options.h"}},
      {"host/tvpcim/InstalledFiles.h", {}},
      {"host/tvpcim/Session.h", OUTPUT},
      {"host/tvpcim/Inventory.h", OUTPUT + Paths{"host/tvpcim/Session.h"}},
      {"host/tvpcim/Tool.h", OUTPUT + Paths{"host/tvpcim/Session.h", "host/tvpcim/Inventory.h"}},
      {"host/tvpcim/Commands.h", OUTPUT + Paths{"host/tvpcim/Tool.h"}},
      {"host/tvpcim/storage", TOOL},
      {"host/tvpcim/cim", TOOL + Paths{"host/tvpcim/storage"}},
      {"host/tvpcim/remote", TOOL + CIMXML +
                                 Paths{
                                     "host/cimxml/indications", "host/cimxml/client", "host/cimxml/server",
                                     "host/tvpcim/storage", "host/tvpcim/cim"}},
      {"host/tvpcim/status", TOOL + Paths{"host/tvpcim/storage", "host/tvpcim/remote"}},
      {"host/tvpcim",
       TOOL + Paths{"host/tvpcim/storage", "host/tvpcim/cim", "host/tvpcim/remote", "host/tvpcim/status"}},
  };
  return rows;
}

bool isBelow(const std::string& path, const std::string& directory) {
  return SourceFile{path, {}}.isBelow(directory);
}

/** The layer of a file: the row with the longest path that the file lies below; none for tests and the like.
 */
const Layer* layerOf(const std::string& path) {
  const Layer* found = nullptr;
  for (const Layer& layer : layers()) {
    if (isBelow(path, layer.path) && (found == nullptr || layer.path.size() > found->path.size())) {
      found = &layer;
    }
  }
  return found;
}

/** What is wrong with one include line; empty when nothing is. */
std::string faultOf(const std::string& file, const Include& include) {
  const Layer* from = layerOf(file);
  if (include.path.empty()) {
    return include.isQuoted ? "there is no such header; headers of libraries stand in <>" : "";
  }
  if (from == nullptr) {
    return "";
  }
  const Layer* to = layerOf(include.path);
  if (to == nullptr) {
    return from->path +
           " is a layer of the product and includes no header of tests, fuzz targets or the benchmark";
  }
  if (to == from || std::count(from->sees.begin(), from->sees.end(), to->path) != 0) {
    return "";
  }
  std::string rule = from->path + " includes headers of its own";
  for (const std::string& seen : from->sees) {
    rule += (&seen == &from->sees.back() ? " and of " : ", of ") + seen;
  }
  return rule + "; " + include.path + " belongs to " + to->path;
}

TEST(Layers, IncludeOnlyWhatLiesBelowThem) {
  for (const SourceFile& file : sourceFiles()) {
    for (const Include& include : includesOf(file)) {
      const std::string fault = faultOf(file.path, include);
      EXPECT_EQ(fault, "") << file.path << ":" << include.line << ": #include " << include.name;
    }
  }
}

TEST(Layers, NameOnlyRowsAboveThemselves) {
  for (std::size_t row = 0; row < layers().size(); ++row) {
    for (const std::string& seen : layers()[row].sees) {
      const bool above = std::any_of(
          layers().begin(), layers().begin() + static_cast<std::ptrdiff_t>(row),
          [&seen](const Layer& layer) { return layer.path == seen; });
      EXPECT_TRUE(above) << layers()[row].path << " sees " << seen;
    }
  }
}

TEST(Layers, HoldEverySourceOfTheProduct) {
  for (const SourceFile& file : sourceFiles()) {
    const bool product =
        std::none_of(TOOLS_AND_TESTS.begin(), TOOLS_AND_TESTS.end(), [&file](const std::string& place) {
          return file.isBelow(place);
        });
    if (product && !includesOf(file).empty()) {
      EXPECT_NE(layerOf(file.path), nullptr) << file.path << " is in no layer; add a row for its directory";
    }
  }
}

TEST(Layers, IncludeLinesAreJudgedByTheTable) {
  struct Sample {
    const char* file;
    const char* line;
    const char* fault;  ///< part of what is found; empty for nothing
  };
  const std::vector<Sample> samples = {
      {"providers/X.cpp", "#include \"backend/LibraryAccess.h\"", ""},
      {"backend/X.cpp", "#include \"LibraryAccess.h\"", ""},
      {"text/X.cpp", "#include <string>", ""},
      {"tests/engine/X.cpp", "#include \"voltvk/engine/state/Records.h\"", ""},
      {"CIM/Framework/X.cpp", "  # include \"backend/LibraryAccess.h\"", "belongs to backend"},
      {"oslib/X.h", "#include <CIM/Framework/CIMValue.h>", "belongs to CIM/Framework"},
      {"backend/X.cpp", "#include \"voltvk/engine/state/Records.h\"", "voltvk/engine/state"},
      {"host/schema/X.cpp", "#include \"../broker/Broker.h\"", "host/broker"},
      {"cmpi/X.cpp", "#include \"tests/support/Lines.h\"", "no header of tests"},
      {"cmpi/X.cpp", "#include \"cmpi/Nothing.h\"", "no such header"},
  };
  for (const Sample& sample : samples) {
    SCOPED_TRACE(std::string(sample.line) + " in " + sample.file);
    const std::vector<Include> includes = includesOf({sample.file, {"// a line before it", sample.line}});
    ASSERT_EQ(includes.size(), 1U);
    EXPECT_EQ(includes[0].line, 2U);
    const std::string fault = faultOf(sample.file, includes[0]);
    EXPECT_EQ(fault.empty(), *sample.fault == '\0') << fault;
    EXPECT_NE(fault.find(sample.fault), std::string::npos) << fault;
  }
}

}  // namespace
}  // namespace tvp::test
