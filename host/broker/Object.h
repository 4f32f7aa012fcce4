// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_BROKER_OBJECT_H
#define HOST_BROKER_OBJECT_H

#include "cmpift.h"
#include "host/schema/Schema.h"
#include "host/schema/Value.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace tvp::host {

class Broker;

/** What a result has collected; shared with the request, which outlives the result. */
struct ResultContent {
  std::vector<Instance> instances;
  std::vector<ObjectPath> paths;
  std::vector<Value> data;
  std::string error;  ///< message of the last returned error
  bool done = false;
};

/* The contents of the encapsulated objects. */

struct StringContent {
  std::optional<std::string> text;  ///< without a value the character pointer is null
};

struct InstanceContent {
  Instance instance;
  const SchemaClass* schemaClass = nullptr;  ///< set if the properties are in the order of the class
  bool filtered = false;
  std::vector<std::string> requested;  ///< with a filter: the names that pass, besides the keys

  /** The position of a property, if there is one of that name. */
  std::optional<std::size_t> find(const char* name) const;
  bool passesFilter(const std::string& name) const;
  /** A copy without the properties that the filter drops. */
  Instance snapshot() const;
};

struct ArgsContent {
  Arguments arguments;
  const SchemaMethod* method = nullptr;  ///< if set, names and types are checked against its outputs
};

struct ArrayContent {
  CMPIType elementType = CMPI_null;
  Value::List elements;
};

struct EnumerationContent {
  Value::List values;
  std::size_t next = 0;
};

struct ResultHandle {
  std::shared_ptr<ResultContent> content;
};

struct ContextContent {
  std::vector<NamedValue> entries;
  bool nullPrincipal = false;  ///< the principal's string has a null text
  bool prepared = false;       ///< created by prepareAttachThread
};

struct SelectExpContent {
  std::string query;
  std::string language;
};

struct ErrorContent {
  std::string owner;
  std::string messageId;
  std::string message;
  CMPIErrorSeverity severity = CMPIErrorSevUnknown;
  CMPIErrorProbableCause cause = CMPIErrorProbCauseUnknown;
  CMPIrc statusCode = CMPI_RC_OK;
  CMPIErrorType type = CMPIUnknownErrorType;
  CMPIErrorSrcFormat sourceFormat = CMPIErrorSrcFormatUnknown;
  std::string otherType;
  std::string causeDescription;
  std::string source;
  std::string otherSourceFormat;
  std::string statusDescription;
  Value recommendedActions = Value::array(CMPI_string, {});
  Value messageArguments = Value::array(CMPI_string, {});
};

/** Binds the C struct of an encapsulated object to its content, its name and its function table. */
template <class Face>
struct ObjectTraits;
template <>
struct ObjectTraits<CMPIString> {
  using Content = StringContent;
  static constexpr char NAME[] = "CMPIString";
  static CMPIStringFT* table();
};
template <>
struct ObjectTraits<CMPIObjectPath> {
  using Content = ObjectPath;
  static constexpr char NAME[] = "CMPIObjectPath";
  static CMPIObjectPathFT* table();
};
template <>
struct ObjectTraits<CMPIInstance> {
  using Content = InstanceContent;
  static constexpr char NAME[] = "CMPIInstance";
  static CMPIInstanceFT* table();
};
template <>
struct ObjectTraits<CMPIArgs> {
  using Content = ArgsContent;
  static constexpr char NAME[] = "CMPIArgs";
  static CMPIArgsFT* table();
};
template <>
struct ObjectTraits<CMPIArray> {
  using Content = ArrayContent;
  static constexpr char NAME[] = "CMPIArray";
  static CMPIArrayFT* table();
};
template <>
struct ObjectTraits<CMPIEnumeration> {
  using Content = EnumerationContent;
  static constexpr char NAME[] = "CMPIEnumeration";
  static CMPIEnumerationFT* table();
};
template <>
struct ObjectTraits<CMPIDateTime> {
  using Content = DateTime;
  static constexpr char NAME[] = "CMPIDateTime";
  static CMPIDateTimeFT* table();
};
template <>
struct ObjectTraits<CMPIResult> {
  using Content = ResultHandle;
  static constexpr char NAME[] = "CMPIResult";
  static CMPIResultFT* table();
};
template <>
struct ObjectTraits<CMPIContext> {
  using Content = ContextContent;
  static constexpr char NAME[] = "CMPIContext";
  static CMPIContextFT* table();
};
template <>
struct ObjectTraits<CMPISelectExp> {
  using Content = SelectExpContent;
  static constexpr char NAME[] = "CMPISelectExp";
  static CMPISelectExpFT* table();
};
template <>
struct ObjectTraits<CMPIError> {
  using Content = ErrorContent;
  static constexpr char NAME[] = "CMPIError";
  static CMPIErrorFT* table();
};

/**
 * What all encapsulated objects share: their owner and whether they are alive. A dead object is kept for a
 * while without its content, so that a late use is detected.
 */
class ObjectCore {
public:
  enum class Life : std::uint8_t { Alive, Released, Ended };

  ObjectCore(Broker& broker, const char* typeName, const void* face)
      : m_typeName(typeName), m_broker(broker), m_face(face) {}
  virtual ~ObjectCore() { m_magic = 0; }
  ObjectCore(const ObjectCore&) = delete;
  ObjectCore& operator=(const ObjectCore&) = delete;

  /** The object behind a face; null if there is none (null, a null handle, or a copied face). */
  static ObjectCore* of(const void* face);

  Broker& broker() const { return m_broker; }
  /** The name of the C type; that of ObjectTraits, so that types can be compared by its address. */
  const char* typeName() const { return m_typeName; }
  Life life() const { return m_life.load(std::memory_order_acquire); }
  bool isAlive() const { return life() == Life::Alive; }
  /** Ends the object and frees its content; only the first call does anything. */
  void die(Life how);
  /** Records a release that was made to fail: the owner has not leaked the object. */
  void refuseRelease() { m_releaseRefused = true; }
  bool isLeak() const { return isAlive() && !m_releaseRefused; }
  std::uint64_t serial() const { return m_serial; }
  void setSerial(std::uint64_t serial) { m_serial = serial; }
  /** The type, and the content if it helps to find the object. */
  virtual std::string describe() const = 0;

protected:
  virtual void clear() = 0;

private:
  static constexpr std::uint32_t MAGIC = 0x43494D4FU;

  std::uint32_t m_magic = MAGIC;
  const char* const m_typeName;
  std::atomic<Life> m_life{Life::Alive};
  std::atomic<bool> m_releaseRefused{false};
  Broker& m_broker;
  const void* m_face;
  std::uint64_t m_serial = 0;
};

/** An encapsulated object: the face that a provider sees, and the content. */
template <class Face>
class Object final : public ObjectCore {
public:
  using Traits = ObjectTraits<Face>;
  using Content = typename Traits::Content;

  Object(Broker& broker, Content content)
      : ObjectCore(broker, Traits::NAME, &m_face), m_content(std::move(content)) {
    m_face.hdl = static_cast<ObjectCore*>(this);
    m_face.ft = Traits::table();
  }

  Face* face() { return &m_face; }
  /** The content; only for a live object. */
  Content& content() { return *m_content; }

  std::string describe() const override {
    std::string text = typeName();
    if (!m_content) {
      return text;
    }
    if constexpr (std::is_same_v<Face, CMPIString>) {
      text += " \"" + m_content->text.value_or("") + "\"";
    } else if constexpr (std::is_same_v<Face, CMPIObjectPath>) {
      text += " of " + m_content->className;
    } else if constexpr (std::is_same_v<Face, CMPIInstance>) {
      text += " of " + m_content->instance.path.className;
    }
    return text;
  }

protected:
  void clear() override { m_content.reset(); }

private:
  Face m_face{};
  std::optional<Content> m_content;
};

}  // namespace tvp::host

#endif
