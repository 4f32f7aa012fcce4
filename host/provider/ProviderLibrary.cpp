// SPDX-License-Identifier: Apache-2.0
#include "host/provider/ProviderLibrary.h"

#include "host/schema/RegularFile.h"

#include <cstring>

#include <dlfcn.h>
#include <elf.h>

namespace tvp::host {
namespace {

/** A factory of the library; null if it has none of that name. */
template <class Factory>
Factory findFactory(void* library, const std::string& providerName, const char* interfaceName) {
  return reinterpret_cast<Factory>(
      dlsym(library, (providerName + "_Create_" + interfaceName + "MI").c_str()));
}

template <class Header>
bool readHeader(const RegularFile& file, std::uint64_t offset, Header& header) {
  const std::string bytes = file.read(offset, sizeof header);
  std::memcpy(&header, bytes.data(), bytes.size());
  return bytes.size() == sizeof header;
}

/**
 * Refuses a library that ends before what its headers announce: the loader maps it all the same, and the
 * process ends when the missing part is accessed. What is no library at all is left to the loader.
 */
void checkIsWhole(const RegularFile& file) {
  Elf64_Ehdr header{};
  if (!readHeader(file, 0, header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 ||
      header.e_ident[EI_CLASS] != ELFCLASS64) {
    return;
  }
  for (unsigned int index = 0; index < header.e_phnum; ++index) {
    Elf64_Phdr segment{};
    const bool read = readHeader(file, header.e_phoff + std::uint64_t{index} * header.e_phentsize, segment);
    if (!read || (segment.p_type == PT_LOAD &&
                  (segment.p_offset > file.size() || segment.p_filesz > file.size() - segment.p_offset))) {
      throw FileError("it is truncated; install it again");
    }
  }
}

std::string lastLoaderError() {
  const char* text = dlerror();
  return text == nullptr ? "unknown error" : text;
}

}  // namespace

ProviderLibrary::ProviderLibrary(const std::string& fileName, const std::string& providerName)
    : m_handle(nullptr) {
  try {
    checkIsWhole(RegularFile(fileName));
  } catch (const FileError& error) {
    throw ProviderLoadError(
        "cannot read the provider " + fileName + ": " + error.what() +
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
