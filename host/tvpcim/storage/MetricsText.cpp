// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/storage/MetricsText.h"

#include "host/tvpcim/output/Text.h"

namespace tvp::host::tvpcim {
namespace {

/** A value of a label: any text, on one line. */
std::string escaped(const std::string& value) {
  std::string text;
  for (const char c : toUtf8(value)) {
    if (c == '\n') {
      text += "\\n";
      continue;
    }
    if (c == '\\' || c == '"') {
      text += '\\';
    }
    text += c;
  }
  return text;
}

std::string labelsText(const MetricSample::Labels& labels) {
  std::string text;
  for (const auto& [name, value] : labels) {
    text += (text.empty() ? "{" : ",") + name + "=\"" + escaped(value) + "\"";
  }
  return text.empty() ? "" : text + "}";
}

}  // namespace

void MetricsText::add(
    const std::string& name, const char* type, const std::string& help,
    const std::vector<MetricSample>& samples) {
  if (samples.empty()) {
    return;
  }
  m_text += "# HELP " + name + " " + help + "\n# TYPE " + name + " " + type + "\n";
  for (const MetricSample& sample : samples) {
    m_text += name + labelsText(sample.labels) + " " + sample.value + "\n";
  }
}

}  // namespace tvp::host::tvpcim
