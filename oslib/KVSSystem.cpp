// SPDX-License-Identifier: Apache-2.0
#include "oslib/KVSSystem.h"

#include "oslib/KVSFile.h"
#include "oslib/KVSPaths.h"
#include "oslib/KVSStatus.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include <dlfcn.h>
#include <sys/utsname.h>
#include <unistd.h>

int KvsGetHostName(char* buffer, std::uint32_t length) {
  if (buffer != nullptr) {
    static_cast<void>(gethostname(buffer, length));
  }
  return KVS_DONE;
}

int KvsGetProcessId() {
  return getpid();
}

int KvsGetenv(const char* name, std::uint32_t, char* destination) {
  if (name == nullptr || destination == nullptr) {
    return KVS_MISSING_ARGUMENT;
  }
  const char* value = std::getenv(name);
  if (value == nullptr) {
    return KVS_FAILED;
  }
  std::memcpy(destination, value, std::strlen(value) + 1);
  return KVS_DONE;
}

int KvsGetOSInfo(char* buffer, std::uint32_t length) {
  utsname system{};
  if (buffer == nullptr) {
    return KVS_MISSING_ARGUMENT;
  }
  if (uname(&system) != 0) {
    return KVS_FAILED;
  }
  char text[sizeof system.sysname + sizeof system.release + sizeof system.machine + sizeof "   "];
  std::snprintf(text, sizeof text, "%s %s %s ", system.sysname, system.release, system.machine);
  std::strncpy(buffer, text, length);
  return KVS_DONE;
}

int KvsGetProductVersion(char* buffer, std::uint32_t length) {
  constexpr int VERSION_LINE = 4;
  char line[80] = "";
  if (buffer == nullptr) {
    return KVS_FAILED;
  }
  KvsFile file;
  try {
    file.reset(std::fopen(kvsProductConfigurationFile().c_str(), "re"));
  } catch (const std::bad_alloc&) {
    return KVS_FAILED;
  }
  if (!file) {
    return KVS_FAILED;
  }
  for (int number = 1; number <= VERSION_LINE; ++number) {
    if (std::fgets(line, sizeof line, file.get()) == nullptr) {
      line[0] = '\0';
      break;
    }
  }
  const std::size_t textLength = std::strcspn(line, "\n");
  const std::size_t wanted = static_cast<std::uint16_t>(length);
  std::fill_n(buffer, wanted, '\0');
  std::copy_n(line, std::min(textLength, wanted), buffer);
  return KVS_DONE;
}

int KvsGetHostIPAddress(void*) {
  return KVS_DONE;
}

int get_iface_list(void*) {
  return KVS_DONE;
}

void* KvsLoadLibrary(const char* name, std::uint32_t* error) {
  if (name == nullptr || error == nullptr) {
    return nullptr;
  }
  char file[256];
  const int length = std::snprintf(file, sizeof file, "%s.so", name);
  const bool fits = length > 0 && static_cast<std::size_t>(length) < sizeof file;
  void* library = fits ? dlopen(file, RTLD_LAZY) : nullptr;
  *error = library == nullptr ? 1 : 0;
  return library;
}

int KvsUnloadLibrary(void** library) {
  if (library == nullptr) {
    return KVS_FAILED;
  }
  if (*library != nullptr) {
    dlclose(*library);
  }
  return KVS_DONE;
}

void* KvsGetFuncAddress(void* library, const char* symbol, std::uint32_t* error) {
  if (library == nullptr || symbol == nullptr || error == nullptr) {
    return nullptr;
  }
  void* address = dlsym(library, symbol);
  *error = address == nullptr ? 1 : 0;
  return address;
}
