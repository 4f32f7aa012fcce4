// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_MESSAGE_REQUESTMESSAGE_H
#define HOST_CIMXML_MESSAGE_REQUESTMESSAGE_H

#include "host/schema/Schema.h"
#include "host/schema/Value.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tvp::host::cimxml {

enum class RequestKind { Intrinsic, Method, Export };

/**
 * A request as it arrives: an intrinsic operation, a method call or an export. Its head is read at once; its
 * parameters when they are asked for, since their types depend on the classes.
 *
 * Never changes. Safe for several threads.
 */
class RequestMessage {
public:
  /**
   * @param xml one complete document, in UTF-8
   * @throws BadMessage when it is not well-formed, not a request of CIM-XML, of an unsupported version,
   * several requests in one, nested too deeply, or has a document type definition
   */
  static RequestMessage read(std::string_view xml);
  RequestMessage(RequestMessage&&) noexcept;
  ~RequestMessage();

  RequestKind kind() const;
  /** The ID of the message, which the answer repeats. */
  const std::string& id() const;
  /** The operation, method or export method. */
  const std::string& name() const;
  /** "root/interop"; empty for an export. */
  const std::string& nameSpace() const;

  // Parameters of intrinsic operations. Each returns nothing when the parameter is absent or has no value,
  // and throws CimFailure(CMPI_RC_ERR_INVALID_PARAMETER) when it is of another kind or malformed.
  /** Names of parameters, to refuse those that an operation does not have and those that come twice. */
  std::vector<std::string> parameters() const;
  std::optional<std::string> className(const std::string& parameter) const;
  /** An INSTANCENAME, or a CLASSNAME as a path without keys; in the namespace of the request. */
  std::optional<ObjectPath> path(const std::string& parameter) const;
  /** An INSTANCE, or a VALUE.NAMEDINSTANCE with its path; the values have the types of the schema where the
   * class and the property are known, else those of the message. */
  std::optional<Instance> instance(const std::string& parameter, const Schema& schema) const;
  std::optional<bool> boolean(const std::string& parameter) const;
  std::optional<std::string> text(const std::string& parameter) const;
  std::optional<std::uint32_t> number(const std::string& parameter) const;
  std::optional<std::vector<std::string>> texts(const std::string& parameter) const;

  /** The object of a method call; without keys for a class. @throws CimFailure */
  ObjectPath target() const;
  /**
   * The arguments of a method call, with the types that PARAMTYPE names; where it is absent, those of the
   * method, and without a method those that the text suggests. Names stay as they were written; an argument
   * without a value is null.
   * @param method may be null
   * @throws CimFailure for a value that is not of its type
   */
  Arguments arguments(const SchemaMethod* method) const;

  /** The indication of an export. @throws CimFailure */
  Instance indication() const;

private:
  struct Content;
  explicit RequestMessage(std::unique_ptr<Content> content);

  std::unique_ptr<Content> m_content;
};

}  // namespace tvp::host::cimxml

#endif
