// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Scope.h"

#include "host/broker/Broker.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace tvp::host {

Scope::~Scope() {
  endSince(0);
}

void Scope::adopt(std::unique_ptr<ObjectCore> object) {
  std::vector<std::unique_ptr<ObjectCore>> dead;
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    object->setSerial(m_nextSerial++);
    if (m_kind == Kind::Lasting && m_objects.size() >= m_sweepAt) {
      sweep(dead);
    }
    m_objects.push_back(std::move(object));
  }
  m_broker.bury(std::move(dead));
}

void Scope::sweep(std::vector<std::unique_ptr<ObjectCore>>& dead) {
  const auto firstDead = std::stable_partition(
      m_objects.begin(), m_objects.end(), [](const auto& object) { return object->isAlive(); });
  std::move(firstDead, m_objects.end(), std::back_inserter(dead));
  m_objects.erase(firstDead, m_objects.end());
  m_sweepAt = std::max<std::size_t>(64, m_objects.size() * 2);
}

std::uint64_t Scope::mark() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_nextSerial;
}

void Scope::endSince(std::uint64_t mark) {
  std::vector<std::unique_ptr<ObjectCore>> dead;
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto first = std::find_if(
        m_objects.begin(), m_objects.end(), [mark](const auto& object) { return object->serial() >= mark; });
    std::move(first, m_objects.end(), std::back_inserter(dead));
    m_objects.erase(first, m_objects.end());
    if (mark == 0) {
      std::for_each(m_blocks.begin(), m_blocks.end(), std::free);
      m_blocks.clear();
    }
  }
  for (const auto& object : dead) {
    object->die(ObjectCore::Life::Ended);
  }
  m_broker.bury(std::move(dead));
}

std::vector<std::string> Scope::leaks() const {
  std::vector<std::string> result;
  const std::lock_guard<std::mutex> lock(m_mutex);
  for (const auto& object : m_objects) {
    if (object->isLeak()) {
      result.push_back(object->describe());
    }
  }
  return result;
}

void Scope::addRemark(const std::string& text) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_remarks.push_back(text);
}

std::vector<std::string> Scope::remarks() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_remarks;
}

void* Scope::allocate(std::size_t size, bool zeroed) {
  void* block = zeroed ? std::calloc(1, size) : std::malloc(size);
  if (block != nullptr) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_blocks.insert(block);
  }
  return block;
}

void* Scope::reallocate(void* block, std::size_t size) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (block != nullptr && m_blocks.erase(block) == 0) {
    return nullptr;
  }
  void* moved = std::realloc(block, size);
  m_blocks.insert(moved != nullptr ? moved : block);
  m_blocks.erase(nullptr);
  return moved;
}

void Scope::release(void* block) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (m_blocks.erase(block) != 0) {
    std::free(block);
  }
}

}  // namespace tvp::host
