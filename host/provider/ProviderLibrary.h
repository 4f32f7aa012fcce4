// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_PROVIDER_PROVIDERLIBRARY_H
#define HOST_PROVIDER_PROVIDERLIBRARY_H

#include "cmpift.h"

#include <memory>
#include <stdexcept>
#include <string>

namespace tvp::host {

/** The four factory functions of a provider; those that it lacks are null. */
struct ProviderFactories {
  CMPIInstanceMI* (*instance)(const CMPIBroker*, const CMPIContext*, CMPIStatus*) = nullptr;
  CMPIMethodMI* (*method)(const CMPIBroker*, const CMPIContext*, CMPIStatus*) = nullptr;
  CMPIAssociationMI* (*association)(const CMPIBroker*, const CMPIContext*, CMPIStatus*) = nullptr;
  CMPIIndicationMI* (*indication)(const CMPIBroker*, const CMPIContext*, CMPIStatus*) = nullptr;
};

/** A provider that cannot be loaded; what() says what was wrong and what to do. */
class ProviderLoadError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/**
 * A provider's shared library, loaded as object managers load it; unloaded on destruction unless it is kept.
 */
class ProviderLibrary {
public:
  /**
   * @param fileName the library
   * @param providerName the prefix of the factories' names, as in NAME_Create_InstanceMI
   * @throws ProviderLoadError if the file is missing, is not a library, is truncated, or has none of the
   * factories.
   */
  ProviderLibrary(const std::string& fileName, const std::string& providerName);
  ~ProviderLibrary();
  ProviderLibrary(const ProviderLibrary&) = delete;
  ProviderLibrary& operator=(const ProviderLibrary&) = delete;

  const ProviderFactories& factories() const { return m_factories; }
  /** Leaves the library in the process, since its threads may still be running. */
  void keepLoaded() { m_handle = nullptr; }

private:
  void* m_handle;
  ProviderFactories m_factories;
};

}  // namespace tvp::host

#endif
