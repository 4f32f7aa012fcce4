// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/indications/SubscriptionsFile.h"

#include "host/cimxml/indications/InteropNames.h"
#include "host/schema/ObjectPathText.h"
#include "host/schema/RegularFile.h"
#include "text/Quote.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace tvp::host::cimxml {
namespace {

using Json = nlohmann::ordered_json;

constexpr int LAYOUT = 1;                         ///< of the file
constexpr std::uint64_t LARGEST_FILE = 64 << 20;  ///< bytes; far more than the server stores

std::string withReason(const std::string& what) {
  return what + " (" + std::strerror(errno) + ")";
}

[[noreturn]] void failWriting(const std::string& name) {
  throw std::runtime_error(withReason("the subscriptions cannot be stored in " + text::quoted(name)));
}

/** A file beside another one, removed on destruction unless it has taken the other's place. */
class NewFile {
public:
  explicit NewFile(std::string target)
      : m_target(std::move(target)), m_name(m_target + ".XXXXXX"),
        m_file(::mkostemp(m_name.data(), O_CLOEXEC)) {
    if (m_file < 0) {
      failWriting(m_target);
    }
  }
  ~NewFile() {
    ::close(m_file);
    if (!m_name.empty()) {
      ::unlink(m_name.c_str());
    }
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  void write(const std::string& content) {
    for (std::size_t written = 0; written < content.size();) {
      const ssize_t count = ::write(m_file, content.data() + written, content.size() - written);
      if (count < 0 && errno != EINTR) {
        failWriting(m_target);
      }
      written += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
  }

  /** Takes the target's place, also for a power cut that follows. */
  void takePlace() {
    if (::fsync(m_file) != 0 || std::rename(m_name.c_str(), m_target.c_str()) != 0) {
      failWriting(m_target);
    }
    m_name.clear();
    const std::string directory = std::filesystem::path(m_target).parent_path().string();
    const int opened =
        ::open(directory.empty() ? "." : directory.c_str(), O_RDONLY | O_CLOEXEC | O_DIRECTORY);
    if (opened >= 0) {
      ::fsync(opened);  // where it fails, the file system does not offer it
      ::close(opened);
    }
  }

private:
  const std::string m_target;
  std::string m_name;
  const int m_file;
};

Json jsonOf(const Value& value) {
  if (value.isNull()) {
    return nullptr;
  }
  if (value.isArray()) {
    Json list = Json::array();
    for (const Value& element : value.asArray()) {
      list.push_back(jsonOf(element));
    }
    return list;
  }
  switch (value.type()) {
  case CMPI_string:
    return value.asString();
  case CMPI_boolean:
    return value.asBoolean();
  case CMPI_dateTime:
    return value.asDateTime().text();
  case CMPI_ref:
    return toPathText(value.asReference());
  default:
    return value.asUnsigned();
  }
}

DateTime timeOf(const std::string& text) {
  const std::optional<DateTime> time = DateTime::parse(text);
  if (!time) {
    throw std::invalid_argument(text::quoted(text) + " is not a valid date and time");
  }
  return *time;
}

/** @throws std::exception when it is not of the type */
Value valueOf(const Json& json, CMPIType type) {
  if (json.is_null()) {
    return Value::null(type);
  }
  if ((type & CMPI_ARRAY) != 0) {
    const CMPIType elementType = static_cast<CMPIType>(type & ~CMPI_ARRAY);
    Value::List elements;
    for (const Json& element : json.get_ref<const Json::array_t&>()) {
      elements.push_back(valueOf(element, elementType));
    }
    return Value::array(elementType, std::move(elements));
  }
  switch (type) {
  case CMPI_string:
    return Value::string(json.get<std::string>());
  case CMPI_boolean:
    return Value::boolean(json.get<bool>());
  case CMPI_dateTime:
    return Value::dateTime(timeOf(json.get<std::string>()));
  case CMPI_ref:
    return Value::reference(parsePathText(json.get<std::string>()));
  default:
    return Value::unsignedInteger(type, json.get<std::uint64_t>());
  }
}

Json jsonOf(const StoredInstance& stored) {
  Json properties = Json::object();
  for (const NamedValue& property : stored.instance.properties) {
    if (!property.value.isNull()) {
      properties[property.name] = jsonOf(property.value);
    }
  }
  return {
      {"class", stored.instance.path.className},
      {"owner", stored.owner},
      {"properties", std::move(properties)}};
}

/** @throws std::exception for anything unexpected */
StoredInstance storedOf(const Json& json, const Schema& schema) {
  const SchemaClass* known = schema.find(json.at("class").get<std::string>());
  if (known == nullptr) {
    throw std::invalid_argument("there is no class " + json.at("class").dump());
  }
  StoredInstance result{emptyInteropInstance(schema, known->name), json.at("owner").get<std::string>()};
  for (const auto& [name, value] : json.at("properties").items()) {
    const SchemaProperty* property = known->property(name);
    if (property == nullptr) {
      throw std::invalid_argument(known->name + " has no property " + text::quoted(name));
    }
    setValue(result.instance.properties, name, valueOf(value, property->type));
  }
  takeKeys(result.instance, *known);
  return result;
}

}  // namespace

SubscriptionsFile::SubscriptionsFile(std::string name) : m_name(std::move(name)) {
  if (m_name.empty()) {
    return;
  }
  const std::string lock = m_name + ".lock";
  m_lock = ::open(lock.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (m_lock < 0) {
    throw std::runtime_error(withReason(
        "the subscriptions cannot be stored in " + text::quoted(m_name) + ": " + text::quoted(lock) +
        " cannot be written"));
  }
  if (::flock(m_lock, LOCK_EX | LOCK_NB) != 0) {
    ::close(m_lock);
    throw std::runtime_error(
        "the subscriptions in " + text::quoted(m_name) +
        " are used by another server; end it, or name another file");
  }
}

SubscriptionsFile::~SubscriptionsFile() {
  if (m_lock >= 0) {
    ::close(m_lock);
  }
}

std::vector<StoredInstance> SubscriptionsFile::read(const Schema& schema) const {
  std::vector<StoredInstance> result;
  if (m_name.empty() || (::access(m_name.c_str(), F_OK) != 0 && errno == ENOENT)) {
    return result;
  }
  try {
    const RegularFile file(m_name);
    if (file.size() > LARGEST_FILE) {
      throw std::invalid_argument("it is larger than such a file can be");
    }
    const Json content = Json::parse(file.read(0, static_cast<std::size_t>(file.size())));
    if (content.at("layout") != LAYOUT) {
      throw std::invalid_argument("its layout is " + content.at("layout").dump() + ", which is not known");
    }
    for (const Json& entry : content.at("instances").get_ref<const Json::array_t&>()) {
      result.push_back(storedOf(entry, schema));
    }
  } catch (const std::exception& error) {
    throw std::runtime_error(
        "the subscriptions in " + text::quoted(m_name) + " cannot be read: " + error.what() +
        "; restore the file, or move it away to begin without subscriptions");
  }
  return result;
}

void SubscriptionsFile::write(const std::vector<const StoredInstance*>& stored) const {
  if (m_name.empty()) {
    return;
  }
  Json content = {{"layout", LAYOUT}, {"instances", Json::array()}};
  for (const StoredInstance* entry : stored) {
    content["instances"].push_back(jsonOf(*entry));
  }
  NewFile file(m_name);
  // What a client sent is valid UTF-8; whatever else is stored must not keep the rest from being stored.
  file.write(content.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
  file.takePlace();
}

}  // namespace tvp::host::cimxml
