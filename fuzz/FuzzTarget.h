// SPDX-License-Identifier: Apache-2.0
#ifndef FUZZ_FUZZTARGET_H
#define FUZZ_FUZZTARGET_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

/** Runs the code under test on one input; a crash or an abort is a find. @return 0 */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace tvp::fuzz {

/** Ends the process when something that must hold does not. */
inline void require(bool holds, const std::string& what) {
  if (!holds) {
    std::fprintf(stderr, "does not hold: %s\n", what.c_str());
    std::abort();
  }
}

/** Reads an input from front to back; beyond its end everything is 0 or empty. */
class Bytes {
public:
  Bytes(const std::uint8_t* data, std::size_t size) : m_text(reinterpret_cast<const char*>(data), size) {}

  bool empty() const { return m_position >= m_text.size(); }
  std::uint8_t byte() { return empty() ? std::uint8_t{0} : static_cast<std::uint8_t>(m_text[m_position++]); }
  std::uint64_t number(unsigned int bytes) {
    std::uint64_t value = 0;
    for (unsigned int i = 0; i < bytes; ++i) {
      value = value << 8U | byte();
    }
    return value;
  }
  /** Up to the next byte of that value, which is left out. */
  std::string until(char end) {
    const std::size_t begin = m_position;
    const std::size_t found = m_text.find(end, begin);
    m_position = found == std::string::npos ? m_text.size() : found + 1;
    return begin >= m_text.size() ? ""
                                  : m_text.substr(begin, found == std::string::npos ? found : found - begin);
  }
  std::string rest() {
    const std::size_t begin = m_position;
    m_position = m_text.size();
    return begin >= m_text.size() ? "" : m_text.substr(begin);
  }

private:
  std::string m_text;
  std::size_t m_position = 0;
};

}  // namespace tvp::fuzz

#endif
