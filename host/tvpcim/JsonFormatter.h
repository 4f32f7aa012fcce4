#ifndef HOST_TVPCIM_JSONFORMATTER_H
#define HOST_TVPCIM_JSONFORMATTER_H

#include "host/tvpcim/Formatter.h"

namespace tvp::host::tvpcim {

/**
 * JSON: arrays of objects, and objects. Numbers keep every digit, what is unset is null, date-times are
 * ISO 8601, references are the text of their path. Bytes that are no UTF-8 become \\xHH in the text.
 */
class JsonFormatter : public Formatter {
public:
  std::string listing(const Listing& listing) const override;
  std::string record(const Instance& instance) const override;
  std::string nothing() const override;
  std::string paths(const std::string& noun, const std::vector<ObjectPath>& paths) const override;
  std::string event(const Instance& instance) const override;
  std::string tree(const std::vector<Instance>& roots) const override;
};

}  // namespace tvp::host::tvpcim

#endif
