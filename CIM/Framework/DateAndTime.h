// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_DATEANDTIME_H
#define CIM_FRAMEWORK_DATEANDTIME_H

#include <string>
#include <utility>

namespace tvp::cim::fwf {

/** Holds one datetime text as it is given. A value. */
class DateAndTime {
public:
  DateAndTime() = default;
  explicit DateAndTime(std::string text) : m_text(std::move(text)) {}

  void setDateAndTimeStringValue(std::string text) { m_text = std::move(text); }
  std::string getDateAndTimeStringValue() const { return m_text; }

private:
  std::string m_text;
};

}  // namespace tvp::cim::fwf

#endif
