// SPDX-License-Identifier: Apache-2.0
#include "allocations/ProductMemory.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <mutex>
#include <string_view>
#include <unordered_set>

#include <dlfcn.h>
#include <link.h>
#include <unwind.h>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);
}

namespace tvp::test {
namespace {

std::atomic<bool> counting{false};
std::atomic<std::uint64_t> made{0};
std::uint64_t failAt = 0;
ProductMemory::Failing mode = ProductMemory::Failing::One;
ProductMemory::Of counted = ProductMemory::Of::Everything;

enum class Owner { Other, Runtime, Product, Database };

/** Whose code lies at an address. Neither locks nor allocates. */
Owner ownerOf(void* address) {
  dl_find_object object{};
  if (_dl_find_object(address, &object) != 0 || object.dlfo_link_map == nullptr) {
    return Owner::Other;
  }
  const std::string_view path = object.dlfo_link_map->l_name;
  const std::string_view file = path.substr(path.rfind('/') + 1);
  const auto is = [&](std::string_view name) { return file.substr(0, name.size()) == name; };
  if (is("libtarvexProProvider.so") || is("libVOLTVK.so")) {
    return Owner::Product;
  }
  if (is("libsqlite3.so")) {
    return Owner::Database;
  }
  return is("libc.so") || is("ld-linux") || is("libstdc++.so") ? Owner::Runtime : Owner::Other;
}

/** On whose behalf the C or C++ library allocates: the first frame below its own. */
Owner ownerBelowRuntime() {
  struct Walk {
    bool inRuntime;
    Owner owner;
  } walk{false, Owner::Other};
  const auto visit = [](_Unwind_Context* frame, void* data) {
    auto& found = *static_cast<Walk*>(data);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the unwinder tells addresses as numbers
    const Owner owner = ownerOf(reinterpret_cast<void*>(_Unwind_GetIP(frame)));
    if (found.inRuntime && owner != Owner::Runtime) {
      found.owner = owner;
      return _URC_END_OF_STACK;
    }
    found.inRuntime = owner == Owner::Runtime;
    return _URC_NO_REASON;
  };
  _Unwind_Backtrace(visit, &walk);
  return walk.owner;
}

/** The blocks of the product that are in use. Usable before static construction: malloc is. */
class Blocks {
public:
  void add(void* block) {
    change([=] {
      if (m_blocks == nullptr) {
        m_blocks = new std::unordered_set<void*>;  // never destroyed: blocks are freed until the process ends
      }
      m_blocks->insert(block);
    });
  }
  void remove(void* block) {
    change([=] {
      if (m_blocks != nullptr) {
        m_blocks->erase(block);
      }
    });
  }
  std::size_t count() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_blocks == nullptr ? 0 : m_blocks->size();
  }
  /** Whether this thread is changing the set, which allocates and frees on its own behalf. */
  static bool isChanging() { return changing; }

private:
  template <typename Work>
  void change(Work work) {
    if (!changing) {
      const std::lock_guard<std::mutex> lock(m_mutex);
      changing = true;
      work();
      changing = false;
    }
  }

  static inline thread_local bool changing = false;
  mutable std::mutex m_mutex;
  std::unordered_set<void*>* m_blocks = nullptr;
};

Blocks blocksInUse;

/** Makes an allocation for the code at an address, unless it is to fail. */
template <typename Work>
void* allocate(void* caller, Work work) {
  if (Blocks::isChanging()) {
    return work();
  }
  Owner owner = ownerOf(caller);
  if (owner == Owner::Runtime) {
    owner = ownerBelowRuntime();
  }
  if (owner != Owner::Product && owner != Owner::Database) {
    return work();
  }
  if (counting && (owner == Owner::Product || counted == ProductMemory::Of::Everything)) {
    const std::uint64_t number = ++made;
    if (number == failAt || (mode == ProductMemory::Failing::AllAfter && failAt != 0 && number > failAt)) {
      errno = ENOMEM;
      return nullptr;
    }
  }
  void* block = work();
  if (block != nullptr && owner == Owner::Product) {
    blocksInUse.add(block);
  }
  return block;
}

}  // namespace

void ProductMemory::fail(std::uint64_t n, Failing failing, Of of) {
  made = 0;
  failAt = n;
  mode = failing;
  counted = of;
  counting = true;
}

std::uint64_t ProductMemory::stop() {
  counting = false;
  return made;
}

std::size_t ProductMemory::blocks() {
  return blocksInUse.count();
}

}  // namespace tvp::test

// NOLINTBEGIN(misc-definitions-in-headers,readability-inconsistent-declaration-parameter-name)
extern "C" {

__attribute__((visibility("default"))) void* malloc(std::size_t size) {
  return tvp::test::allocate(__builtin_return_address(0), [=] { return __libc_malloc(size); });
}

__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size) {
  return tvp::test::allocate(__builtin_return_address(0), [=] { return __libc_calloc(count, size); });
}

__attribute__((visibility("default"))) void* realloc(void* block, std::size_t size) {
  return tvp::test::allocate(__builtin_return_address(0), [=] {
    // Out of the table first: another thread may be given the place as soon as it is free.
    tvp::test::blocksInUse.remove(block);
    return __libc_realloc(block, size);
  });
}

__attribute__((visibility("default"))) void free(void* block) {
  if (block != nullptr) {
    tvp::test::blocksInUse.remove(block);
  }
  __libc_free(block);
}
}
// NOLINTEND(misc-definitions-in-headers,readability-inconsistent-declaration-parameter-name)
