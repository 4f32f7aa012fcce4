// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_SERVER_LISTENER_H
#define HOST_CIMXML_SERVER_LISTENER_H

#include <cstdint>
#include <optional>
#include <string>

namespace tvp::host::cimxml {

/** A file that is closed on destruction. */
class OwnedFile {
public:
  explicit OwnedFile(int file = -1) : m_file(file) {}
  ~OwnedFile();
  OwnedFile(const OwnedFile&) = delete;
  OwnedFile& operator=(const OwnedFile&) = delete;

  int get() const { return m_file; }
  /** Takes another file. */
  void reset(int file);

private:
  int m_file;
};

/** An address and its port, "127.0.0.1:5988" or "[::1]:5988". */
std::string endpointText(const std::string& address, std::uint16_t port);

/** A port that takes connections. Used by one thread, but for the constructor and port(). */
class Listener {
public:
  /** @param port 0 takes any free one @throws std::runtime_error */
  Listener(const std::string& address, std::uint16_t port);

  std::uint16_t port() const { return m_port; }

  struct Accepted {
    int socket = -1;     ///< non-blocking; whoever gets it closes it
    std::string client;  ///< address and port
  };
  /** Waits for a connection. @return nothing once the file can be read */
  std::optional<Accepted> accept(int stop) const;

private:
  OwnedFile m_socket;
  std::uint16_t m_port = 0;
};

}  // namespace tvp::host::cimxml

#endif
