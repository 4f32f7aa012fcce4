// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_PACKAGING_INSTALLEDFILES_H
#define TESTS_PACKAGING_INSTALLEDFILES_H

#include <set>
#include <string>

namespace tvp::test {

inline const std::string libraries = TVP_INSTALL_LIBDIR;
inline const std::string completionsOfZsh = TVP_ZSH_COMPLETION_DIRECTORY;

/** What is installed, below the prefix. */
inline std::set<std::string> installedFiles() {
  return {
      libraries + "/libtarvexProProvider.so",
      libraries + "/libVOLTVK.so",
      "bin/tvpcim",
      "sbin/voltvkctl",
      "sbin/tvp-register",
      "share/tarvexpro/TVP.mof",
      "share/tarvexpro/TVPIndication.mof",
      "share/tarvexpro/pegasus/TVPRegistration.mof",
      "share/tarvexpro/sfcb/TVP.reg",
      "share/man/man1/tvpcim.1.gz",
      "share/man/man8/voltvkctl.8.gz",
      "share/man/man8/tvp-register.8.gz",
      "share/bash-completion/completions/tvpcim",
      "share/bash-completion/completions/voltvkctl",
      "share/bash-completion/completions/tvp-register",
      completionsOfZsh + "/_tvpcim",
      completionsOfZsh + "/_voltvkctl",
      completionsOfZsh + "/_tvp-register",
      "share/lintian/overrides/tarvexpro-provider",
      "share/doc/tarvexpro-provider/README.md",
      "share/doc/tarvexpro-provider/docs/architecture.md",
      "share/doc/tarvexpro-provider/changelog.gz",
      "share/doc/tarvexpro-provider/copyright"};
}

}  // namespace tvp::test

#endif
