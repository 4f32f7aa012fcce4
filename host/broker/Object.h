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

class BrokerState;

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
  const SchemaClass* schemaClass = nullptr;  ///< set when the properties stand as the class declares them
  bool filtered = false;
  std::vector<std::string> requested;  ///< with a filter: the names that count, beside the keys

  /** The position of a property, or NameIndex::NONE. */
  std::size_t find(const char* name) const;
  bool passesFilter(const std::string& name) const;
  /** A copy without the properties that the filter drops. */
  Instance snapshot() const;
};

struct ArgsContent {
  Arguments arguments;
  const SchemaMethod* method = nullptr;  ///< when set, names and types are checked against its outputs
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
  bool prepared = false;       ///< made by prepareAttachThread
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

enum class ObjectKind : std::uint8_t {
  String,
  ObjectPath,
  Instance,
  Args,
  Array,
  Enumeration,
  DateTime,
  Result,
  Context,
  SelectExp,
  Error
};

/** The name of the C type, for example "CMPIString". */
const char* objectTypeName(ObjectKind kind);

/** Binds the C struct of an encapsulated object to its content. */
template <ObjectKind kind, class ContentType>
struct TraitsOf {
  using Content = ContentType;
  static constexpr ObjectKind KIND = kind;
};
template <class Face>
struct ObjectTraits;
template <>
struct ObjectTraits<CMPIString> : TraitsOf<ObjectKind::String, StringContent> {};
template <>
struct ObjectTraits<CMPIObjectPath> : TraitsOf<ObjectKind::ObjectPath, ObjectPath> {};
template <>
struct ObjectTraits<CMPIInstance> : TraitsOf<ObjectKind::Instance, InstanceContent> {};
template <>
struct ObjectTraits<CMPIArgs> : TraitsOf<ObjectKind::Args, ArgsContent> {};
template <>
struct ObjectTraits<CMPIArray> : TraitsOf<ObjectKind::Array, ArrayContent> {};
template <>
struct ObjectTraits<CMPIEnumeration> : TraitsOf<ObjectKind::Enumeration, EnumerationContent> {};
template <>
struct ObjectTraits<CMPIDateTime> : TraitsOf<ObjectKind::DateTime, DateTime> {};
template <>
struct ObjectTraits<CMPIResult> : TraitsOf<ObjectKind::Result, ResultHandle> {};
template <>
struct ObjectTraits<CMPIContext> : TraitsOf<ObjectKind::Context, ContextContent> {};
template <>
struct ObjectTraits<CMPISelectExp> : TraitsOf<ObjectKind::SelectExp, SelectExpContent> {};
template <>
struct ObjectTraits<CMPIError> : TraitsOf<ObjectKind::Error, ErrorContent> {};

/** The function table of an encapsulated type, the same for all brokers. */
template <class Face>
decltype(Face::ft) functionTable();
template <>
CMPIStringFT* functionTable<CMPIString>();
template <>
CMPIObjectPathFT* functionTable<CMPIObjectPath>();
template <>
CMPIInstanceFT* functionTable<CMPIInstance>();
template <>
CMPIArgsFT* functionTable<CMPIArgs>();
template <>
CMPIArrayFT* functionTable<CMPIArray>();
template <>
CMPIEnumerationFT* functionTable<CMPIEnumeration>();
template <>
CMPIDateTimeFT* functionTable<CMPIDateTime>();
template <>
CMPIResultFT* functionTable<CMPIResult>();
template <>
CMPIContextFT* functionTable<CMPIContext>();
template <>
CMPISelectExpFT* functionTable<CMPISelectExp>();
template <>
CMPIErrorFT* functionTable<CMPIError>();

/**
 * What all encapsulated objects share: whose they are and whether they live. A dead object is kept for
 * a while without its content, so that a late use is seen.
 */
class ObjectCore {
public:
  enum class Life : std::uint8_t { Alive, Released, Ended };

  ObjectCore(BrokerState& broker, ObjectKind kind, const void* face)
      : m_kind(kind), m_broker(broker), m_face(face) {}
  virtual ~ObjectCore() { m_magic = 0; }
  ObjectCore(const ObjectCore&) = delete;
  ObjectCore& operator=(const ObjectCore&) = delete;

  /** The object behind a face; null when there is none (null, a null handle, or a copied face). */
  static ObjectCore* of(const void* face);

  BrokerState& broker() const { return m_broker; }
  ObjectKind kind() const { return m_kind; }
  const char* typeName() const { return objectTypeName(m_kind); }
  Life life() const { return m_life.load(std::memory_order_acquire); }
  bool isAlive() const { return life() == Life::Alive; }
  /** Ends the object and frees its content; only the first call does anything. */
  void die(Life how);
  /** A release that was made to fail: the object is no leak of its owner. */
  void refuseRelease() { m_releaseRefused = true; }
  bool isLeak() const { return isAlive() && !m_releaseRefused; }
  std::uint64_t serial() const { return m_serial; }
  void setSerial(std::uint64_t serial) { m_serial = serial; }
  /** The type, and the content where it helps to find the object. */
  virtual std::string describe() const = 0;

protected:
  virtual void clear() = 0;

private:
  static constexpr std::uint32_t MAGIC = 0x43494D4FU;

  std::uint32_t m_magic = MAGIC;
  const ObjectKind m_kind;
  std::atomic<Life> m_life{Life::Alive};
  std::atomic<bool> m_releaseRefused{false};
  BrokerState& m_broker;
  const void* m_face;
  std::uint64_t m_serial = 0;
};

/** An encapsulated object: the face that a provider sees, and the content. */
template <class Face>
class Object final : public ObjectCore {
public:
  using Traits = ObjectTraits<Face>;
  using Content = typename Traits::Content;

  Object(BrokerState& broker, Content content)
      : ObjectCore(broker, Traits::KIND, &m_face), m_content(std::move(content)) {
    m_face.hdl = static_cast<ObjectCore*>(this);
    m_face.ft = functionTable<Face>();
  }

  Face* face() { return &m_face; }
  /** Only of a living object. */
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
