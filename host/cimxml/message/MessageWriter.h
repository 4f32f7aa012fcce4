// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_MESSAGE_MESSAGEWRITER_H
#define HOST_CIMXML_MESSAGE_MESSAGEWRITER_H

#include "host/schema/Schema.h"
#include "host/schema/Value.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tvp::host::cimxml {

/** How much of instances and classes is written. */
struct Detail {
  bool qualifiers = false;                             ///< IncludeQualifiers, of classes
  bool classOrigin = false;                            ///< IncludeClassOrigin
  bool localOnly = false;                              ///< of classes: own properties and methods only
  std::optional<std::vector<std::string>> properties;  ///< PropertyList; without a value all
};

/** The objects that an answer returns, as the operations shape them. */
enum class ObjectShape {
  Instance,       ///< GetInstance: INSTANCE
  NamedInstance,  ///< EnumerateInstances: VALUE.NAMEDINSTANCE
  ObjectWithPath  ///< ExecQuery, Associators, References: VALUE.OBJECTWITHPATH
};
enum class PathShape {
  InstanceName,  ///< EnumerateInstanceNames, CreateInstance: INSTANCENAME
  ObjectPath     ///< AssociatorNames, ReferenceNames: OBJECTPATH
};

/**
 * Texts that cannot be written in XML 1.0 (control characters, bytes that are not UTF-8) are replaced by
 * U+FFFD. All functions write complete documents, are without state and safe for several threads.
 */

/** The answers to an intrinsic operation. @param id, operation those of the request */
struct AnswerHead {
  std::string id;
  std::string name;  ///< of the operation or method
};
std::string emptyAnswer(const AnswerHead& head);
/** @param method whether the request was a method call @param message may be empty */
std::string errorAnswer(const AnswerHead& head, bool method, CMPIrc code, const std::string& message);
/** @param schema gives the origins of properties; a class that it does not have has none */
std::string instancesAnswer(
    const AnswerHead& head, const std::vector<Instance>& instances, ObjectShape shape, const Detail& detail,
    const Schema& schema);
std::string pathsAnswer(const AnswerHead& head, const std::vector<ObjectPath>& paths, PathShape shape);
std::string
classesAnswer(const AnswerHead& head, const std::vector<const SchemaClass*>& classes, const Detail& detail);
std::string classNamesAnswer(const AnswerHead& head, const std::vector<std::string>& names);
/** @param value written as VALUE; null is no value at all. For GetProperty and its like */
std::string valueAnswer(const AnswerHead& head, const Value& value);
std::string methodAnswer(const AnswerHead& head, const Value& returnValue, const Arguments& output);
/** The answer of a listener to an export. */
std::string exportAnswer(const AnswerHead& head);

/** A parameter of an intrinsic operation; the content is one of these. */
struct IntrinsicParameter {
  enum class Kind { ClassName, InstanceName, Instance, NamedInstance, Text, Texts, Boolean };
  std::string name;
  Kind kind = Kind::Text;
  std::string text;                ///< ClassName, Text
  std::vector<std::string> texts;  ///< Texts
  bool flag = false;               ///< Boolean
  ObjectPath path;                 ///< InstanceName; without keys, a CLASSNAME
  Instance instance;               ///< Instance, NamedInstance (with its path)
};
std::string intrinsicRequest(
    const std::string& id, const std::string& operation, const std::string& nameSpace,
    const std::vector<IntrinsicParameter>& parameters);
std::string methodRequest(
    const std::string& id, const ObjectPath& target, const std::string& method, const Arguments& input);
std::string exportRequest(const std::string& id, const Instance& indication);

}  // namespace tvp::host::cimxml

#endif
