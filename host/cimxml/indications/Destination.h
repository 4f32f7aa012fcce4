// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_INDICATIONS_DESTINATION_H
#define HOST_CIMXML_INDICATIONS_DESTINATION_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace tvp::host::cimxml {

/** Where a listener is. A plain value. */
struct Destination {
  bool tls = false;
  std::string host;  ///< a name or an address, without brackets
  std::uint16_t port = 0;
  std::string path;  ///< begins with "/"

  /**
   * Reads "http://HOST:PORT/PATH" or "https://...". Without a port, it is 80 or 443.
   * @throws CimFailure with CMPI_RC_ERR_INVALID_PARAMETER that says what is wrong; also for a user in it
   */
  static Destination parse(const std::string& url);
};

/** How one export is made. */
struct ExportAttempt {
  std::chrono::milliseconds limit{15000};  ///< for all of it
  std::string certificates;                ///< file of trusted certificates; empty: those of the system
};

/**
 * Posts a message to a listener and waits for the answer.
 * @param cancelled asked now and then; the attempt is given up once it returns true
 * @return empty if the listener has taken it, else why not, as the end of a sentence
 */
std::string postExport(
    const Destination& destination, const std::string& message, const ExportAttempt& attempt,
    const std::function<bool()>& cancelled);

}  // namespace tvp::host::cimxml

#endif
