// SPDX-License-Identifier: Apache-2.0
#include "host/provider/ProviderLibrary.h"

#include <cerrno>
#include <cstring>

#include <dlfcn.h>
#include <unistd.h>

namespace tvp::host {
namespace {

/** A factory of the library; null if it has none of that name. */
template <class Factory>
Factory findFactory(void* library, const std::string& providerName, const char* interfaceName) {
  return reinterpret_cast<Factory>(
      dlsym(library, (providerName + "_Create_" + interfaceName + "MI").c_str()));
}

std::string lastLoaderError() {
  const char* text = dlerror();
  return text == nullptr ? "unknown error" : text;
}

}  // namespace

ProviderLibrary::ProviderLibrary(const std::string& fileName, const std::string& providerName)
    : m_handle(nullptr) {
  if (access(fileName.c_str(), R_OK) != 0) {
    throw ProviderLoadError(
        "cannot read the provider " + fileName + ": " + std::strerror(errno) +
        "; check the path, or name the library with --provider");
  }
  m_handle = dlopen(
      fileName.find('/') == std::string::npos ? ("./" + fileName).c_str() : fileName.c_str(),
      RTLD_LAZY | RTLD_GLOBAL);
  if (m_handle == nullptr) {
    throw ProviderLoadError(
        "cannot load the provider " + fileName + ": " + lastLoaderError() +
        "; it must be a shared library of this machine's kind, with all it depends on");
  }
  using F = ProviderFactories;
  m_factories.instance = findFactory<decltype(F::instance)>(m_handle, providerName, "Instance");
  m_factories.method = findFactory<decltype(F::method)>(m_handle, providerName, "Method");
  m_factories.association = findFactory<decltype(F::association)>(m_handle, providerName, "Association");
  m_factories.indication = findFactory<decltype(F::indication)>(m_handle, providerName, "Indication");
  if (m_factories.instance == nullptr && m_factories.method == nullptr &&
      m_factories.association == nullptr && m_factories.indication == nullptr) {
    dlclose(m_handle);
    throw ProviderLoadError(
        fileName + " is not a provider named " + providerName + ": it exports none of " + providerName +
        "_Create_InstanceMI and the like; name another library with --provider");
  }
}

ProviderLibrary::~ProviderLibrary() {
  if (m_handle != nullptr) {
    dlclose(m_handle);
  }
}

}  // namespace tvp::host
