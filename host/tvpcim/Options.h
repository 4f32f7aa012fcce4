// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_OPTIONS_H
#define HOST_TVPCIM_OPTIONS_H

#include <string>

namespace tvp::host::tvpcim {

/** What every verb understands. */
struct Options {
  std::string output;        ///< name of the output format
  bool wide = false;         ///< tables show every column, whatever the width of the terminal
  std::string provider;      ///< file of the provider; empty: found beside the command
  std::string schema;        ///< file of the classes; empty: found beside the command
  std::string user;          ///< the principal of every request
  std::string url;           ///< of the server that is asked; empty: the provider of this machine
  std::string passwordFile;  ///< file of the password for the URL's user; empty: asked for
  std::string certificates;  ///< file of the certificates that servers may have; empty: those of the system
  bool dryRun = false;       ///< changes are only tried, on a copy of the storage's configuration
  std::string nameSpace = "root/kvs/tvp/smi_15";
};

}  // namespace tvp::host::tvpcim

#endif
