// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/InstalledFiles.h"

#include "host/tvpcim/Failure.h"
#include "host/tvpcim/output/Text.h"

#include <filesystem>
#include <vector>

namespace tvp::host::tvpcim {
namespace {

namespace fs = std::filesystem;

/** The prefix that the command is installed in: the parent of the executable's directory. */
fs::path ownPrefix() {
  std::error_code error;
  const fs::path executable = fs::read_symlink("/proc/self/exe", error);
  return error ? fs::path() : executable.parent_path().parent_path();
}

std::string firstOf(const std::string& what, const std::string& advice, const std::vector<fs::path>& places) {
  std::vector<std::string> tried;
  for (const fs::path& place : places) {
    std::error_code error;
    if (fs::exists(place, error)) {
      return place.string();
    }
    tried.push_back(place.string());
  }
  throw OperationError(what + " was not found; looked for " + join(tried, ", ") + "; " + advice);
}

std::string sharedFile(const std::string& file, const std::string& what, const std::string& advice) {
  const fs::path name = fs::path("tarvexpro") / file;
  return firstOf(what, advice, {ownPrefix() / "share" / name, fs::path(TVP_INSTALL_FULL_DATADIR) / name});
}

}  // namespace

std::string installedStorageTool() {
  constexpr const char* NAME = "voltvkctl";
  for (const char* directory : {"bin", "sbin"}) {
    const fs::path file = ownPrefix() / directory / NAME;
    std::error_code error;
    if (fs::exists(file, error)) {
      return file.string();
    }
  }
  return NAME;
}

std::string installedProvider() {
  const std::string name = "libtarvexProProvider.so";
  return firstOf(
      "the provider", "name it with --provider",
      {ownPrefix() / "lib" / name, ownPrefix() / TVP_INSTALL_LIBDIR / name,
       fs::path(TVP_INSTALL_FULL_LIBDIR) / name});
}

std::string installedSchema() {
  return sharedFile("TVP.mof", "the file of the classes", "name it with --schema");
}

std::string installedInteropSchema() {
  return sharedFile(
      "Interop.mof", "the file of the classes of the interop namespace", "install the package again");
}

}  // namespace tvp::host::tvpcim
