// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_CIMMETHODPARAM_H
#define CIM_FRAMEWORK_CIMMETHODPARAM_H

#include "CIM/Framework/CIMInstance.h"
#include "CIM/Framework/CIMProperty.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tvp::cim::fwf {

/** The arguments of a method call, input or output, in the order added. A value. */
class CIMMethodParam {
public:
  CIMMethodParam();
  CIMMethodParam(const CIMMethodParam& other);
  CIMMethodParam(CIMMethodParam&& other) noexcept;
  /** Makes this equal to the source. */
  CIMMethodParam& operator=(const CIMMethodParam& other);
  CIMMethodParam& operator=(CIMMethodParam&& other) noexcept;
  ~CIMMethodParam();

  void addArgument(const CIMProperty& argument) { m_arguments.push_back(argument); }
  void addArgument(CIMProperty&& argument) { m_arguments.push_back(std::move(argument)); }
  void clearArgument() { m_arguments.clear(); }

  std::size_t getArgumentCount() const noexcept { return m_arguments.size(); }
  /** @return a copy of one argument. @throws std::out_of_range for an index past the last. */
  CIMProperty getArgument(unsigned int index) const { return m_arguments.at(index); }
  const std::vector<CIMProperty>& arguments() const noexcept { return m_arguments; }

  /**
   * @return the first argument of exactly this name, owned by this list; null if there is no such argument.
   */
  CIMProperty* getArgumentByName(const std::string& name);
  const CIMProperty* getArgumentByName(const std::string& name) const;

  /** @return the names of the arguments in order, with nothing between them. */
  std::string toString() const;

private:
  std::vector<CIMProperty> m_arguments;
};

}  // namespace tvp::cim::fwf

#endif
