#ifndef HOST_TVPCIM_MOFFORMATTER_H
#define HOST_TVPCIM_MOFFORMATTER_H

#include "host/tvpcim/Formatter.h"

namespace tvp::host::tvpcim {

/**
 * MOF: instance declarations that a MOF compiler reads. Paths are comments, embedded instances are texts
 * that hold MOF, and the nodes of a tree follow each other with their "Level".
 */
class MofFormatter : public Formatter {
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
