// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_STORAGE_METRICSTEXT_H
#define HOST_TVPCIM_STORAGE_METRICSTEXT_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace tvp::host::tvpcim {

/** A value of a metric, for one of the things that it is measured of. */
struct MetricSample {
  using Labels = std::vector<std::pair<std::string, std::string>>;

  MetricSample(Labels givenLabels, std::uint64_t number)
      : labels(std::move(givenLabels)), value(std::to_string(number)) {}
  MetricSample(Labels givenLabels, std::string number)
      : labels(std::move(givenLabels)), value(std::move(number)) {}

  Labels labels;
  std::string value;
};

/** Metrics in the text format of Prometheus, version 0.0.4. */
class MetricsText {
public:
  static constexpr const char* CONTENT_TYPE = "text/plain; version=0.0.4; charset=utf-8";

  /** Metrics go up and down; counters only grow until they are set to 0, and their names end in _total. */
  void gauge(const std::string& name, const std::string& help, const std::vector<MetricSample>& samples) {
    add(name, "gauge", help, samples);
  }
  void counter(const std::string& name, const std::string& help, const std::vector<MetricSample>& samples) {
    add(name, "counter", help, samples);
  }

  const std::string& text() const { return m_text; }

private:
  /** A metric without samples is left out. */
  void
  add(const std::string& name, const char* type, const std::string& help,
      const std::vector<MetricSample>& samples);

  std::string m_text;
};

}  // namespace tvp::host::tvpcim

#endif
