// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/server/IntrinsicOperations.h"

#include "host/cimxml/message/Failure.h"
#include "host/cimxml/message/KeyTypes.h"
#include "host/cimxml/message/MessageWriter.h"
#include "text/Quote.h"

#include <algorithm>
#include <set>
#include <utility>

namespace tvp::host::cimxml {
namespace {

[[noreturn]] void refuseParameter(const std::string& problem) {
  throw CimFailure(CMPI_RC_ERR_INVALID_PARAMETER, problem);
}

/** A parameter that has to be there. */
template <class Content>
Content required(std::optional<Content> content, const char* parameter) {
  if (!content) {
    refuseParameter(std::string("the parameter ") + parameter + " is missing");
  }
  return std::move(*content);
}

AnswerHead headOf(const IntrinsicCall& call) {
  return {call.message.id(), call.message.name()};
}

bool flag(const IntrinsicCall& call, const char* parameter, bool byDefault) {
  return call.message.boolean(parameter).value_or(byDefault);
}

const SchemaClass& namedClass(IntrinsicCall& call, const std::string& className) {
  call.className = className;
  const SchemaClass& known = existingClass(call.nameSpace.schema(), className);
  call.className = known.name;
  return known;
}

ObjectPath pathInNamespace(IntrinsicCall& call, ObjectPath path) {
  path.className = namedClass(call, path.className).name;
  path.nameSpace = call.nameSpace.name();
  applyKeyTypes(path, call.nameSpace.schema());
  return path;
}

/** The class of the parameter ClassName, as a path. */
ObjectPath classPath(IntrinsicCall& call) {
  ObjectPath path;
  path.className = required(call.message.className("ClassName"), "ClassName");
  return pathInNamespace(call, std::move(path));
}

ObjectPath instancePath(IntrinsicCall& call) {
  return pathInNamespace(call, required(call.message.path("InstanceName"), "InstanceName"));
}

PropertyList propertyList(const IntrinsicCall& call) {
  return call.message.texts("PropertyList");
}

/** How much is wanted; qualifiers, and own features of classes only, unless told otherwise. */
Detail detailOf(const IntrinsicCall& call) {
  Detail detail;
  detail.classOrigin = flag(call, "IncludeClassOrigin", false);
  detail.qualifiers = flag(call, "IncludeQualifiers", true);
  detail.localOnly = flag(call, "LocalOnly", true);
  detail.properties = propertyList(call);
  return detail;
}

/** Of instances, neither qualifiers nor LocalOnly have an effect: the standard has withdrawn both. */
Detail instanceDetail(const IntrinsicCall& call) {
  Detail detail = detailOf(call);
  detail.qualifiers = false;
  detail.localOnly = false;
  return detail;
}

/** The classes below one, or below none. @param deep not only those directly below */
std::vector<const SchemaClass*> subclasses(const Schema& schema, const std::string& className, bool deep) {
  std::vector<const SchemaClass*> found;
  for (const SchemaClass* candidate : schema.classes()) {
    const SchemaClass* superclass = declaredClass(schema, candidate->superclass);
    const bool below = className.empty()
                           ? deep || superclass == nullptr
                           : superclass != nullptr && (deep ? schema.isA(superclass->name, className)
                                                            : equalNames(superclass->name, className));
    if (below) {
      found.push_back(candidate);
    }
  }
  return found;
}

/** The classes that an enumeration of classes asks for. */
std::vector<const SchemaClass*> enumeratedClasses(IntrinsicCall& call) {
  std::string top = call.message.className("ClassName").value_or("");
  if (!top.empty()) {
    top = namedClass(call, top).name;
  }
  return subclasses(call.nameSpace.schema(), top, flag(call, "DeepInheritance", false));
}

std::string getClass(IntrinsicCall& call) {
  call.className = required(call.message.className("ClassName"), "ClassName");
  const SchemaClass* known = declaredClass(call.nameSpace.schema(), call.className);
  if (known == nullptr) {
    throw CimFailure(CMPI_RC_ERR_NOT_FOUND, call.className);
  }
  return classesAnswer(headOf(call), {known}, detailOf(call));
}

std::string enumerateClasses(IntrinsicCall& call) {
  return classesAnswer(headOf(call), enumeratedClasses(call), detailOf(call));
}

std::string enumerateClassNames(IntrinsicCall& call) {
  std::vector<std::string> names;
  for (const SchemaClass* found : enumeratedClasses(call)) {
    names.push_back(found->name);
  }
  return classNamesAnswer(headOf(call), names);
}

/** Without DeepInheritance, instances of subclasses have the properties of the class only. */
void restrictTo(Detail& detail, const SchemaClass& schemaClass) {
  std::vector<std::string> names;
  for (const SchemaProperty& property : schemaClass.properties) {
    const auto isProperty = [&property](const std::string& name) { return equalNames(name, property.name); };
    if (!detail.properties || std::any_of(detail.properties->begin(), detail.properties->end(), isProperty)) {
      names.push_back(property.name);
    }
  }
  detail.properties = std::move(names);
}

std::string enumerateInstances(IntrinsicCall& call) {
  const ObjectPath path = classPath(call);
  Detail detail = instanceDetail(call);
  if (!flag(call, "DeepInheritance", true)) {
    restrictTo(detail, *call.nameSpace.schema().find(path.className));
  }
  return instancesAnswer(
      headOf(call), call.nameSpace.enumerate(path, propertyList(call), call.user), ObjectShape::NamedInstance,
      detail, call.nameSpace.schema());
}

std::string enumerateInstanceNames(IntrinsicCall& call) {
  return pathsAnswer(
      headOf(call), call.nameSpace.enumerateNames(classPath(call), call.user), PathShape::InstanceName);
}

std::string getInstance(IntrinsicCall& call) {
  const ObjectPath path = instancePath(call);
  return instancesAnswer(
      headOf(call), {call.nameSpace.get(path, propertyList(call), call.user)}, ObjectShape::Instance,
      instanceDetail(call), call.nameSpace.schema());
}

std::string getProperty(IntrinsicCall& call) {
  const ObjectPath path = instancePath(call);
  const std::string name = required(call.message.text("PropertyName"), "PropertyName");
  if (call.nameSpace.schema().find(path.className)->property(name) == nullptr) {
    throw CimFailure(CMPI_RC_ERR_NO_SUCH_PROPERTY, name);
  }
  const Instance found = call.nameSpace.get(path, PropertyList({name}), call.user);
  const Value* value = found.property(name);
  return valueAnswer(headOf(call), value == nullptr ? Value() : *value);
}

std::string createInstance(IntrinsicCall& call) {
  Instance instance = required(call.message.instance("NewInstance", call.nameSpace.schema()), "NewInstance");
  instance.path = pathInNamespace(call, std::move(instance.path));
  instance.path.keys.clear();
  return pathsAnswer(headOf(call), {call.nameSpace.create(instance, call.user)}, PathShape::InstanceName);
}

std::string modifyInstance(IntrinsicCall& call) {
  Instance instance =
      required(call.message.instance("ModifiedInstance", call.nameSpace.schema()), "ModifiedInstance");
  instance.path = pathInNamespace(call, std::move(instance.path));
  call.nameSpace.modify(instance, propertyList(call), call.user);
  return emptyAnswer(headOf(call));
}

std::string deleteInstance(IntrinsicCall& call) {
  call.nameSpace.remove(instancePath(call), call.user);
  return emptyAnswer(headOf(call));
}

std::string execQuery(IntrinsicCall& call) {
  const std::string language = required(call.message.text("QueryLanguage"), "QueryLanguage");
  const std::string text = required(call.message.text("Query"), "Query");
  return instancesAnswer(
      headOf(call), call.nameSpace.query(text, language, call.user), ObjectShape::ObjectWithPath, {},
      call.nameSpace.schema());
}

/** The object whose associations are asked for. */
ObjectPath associatedPath(IntrinsicCall& call) {
  ObjectPath path = pathInNamespace(call, required(call.message.path("ObjectName"), "ObjectName"));
  if (path.keys.empty()) {
    throw CimFailure(
        CMPI_RC_ERR_NOT_SUPPORTED,
        "associations of classes are not offered; name an instance of " + path.className);
  }
  return path;
}

AssociationFilter associationFilter(const IntrinsicCall& call) {
  AssociationFilter filter;
  filter.associationClass = call.message.className("AssocClass").value_or("");
  filter.resultClass = call.message.className("ResultClass").value_or("");
  filter.role = call.message.text("Role").value_or("");
  filter.resultRole = call.message.text("ResultRole").value_or("");
  return filter;
}

std::string associators(IntrinsicCall& call) {
  const ObjectPath path = associatedPath(call);
  return instancesAnswer(
      headOf(call), call.nameSpace.associators(path, associationFilter(call), propertyList(call), call.user),
      ObjectShape::ObjectWithPath, instanceDetail(call), call.nameSpace.schema());
}

std::string references(IntrinsicCall& call) {
  const ObjectPath path = associatedPath(call);
  return instancesAnswer(
      headOf(call), call.nameSpace.references(path, associationFilter(call), propertyList(call), call.user),
      ObjectShape::ObjectWithPath, instanceDetail(call), call.nameSpace.schema());
}

std::string associatorNames(IntrinsicCall& call) {
  const ObjectPath path = associatedPath(call);
  return pathsAnswer(
      headOf(call), call.nameSpace.associatorNames(path, associationFilter(call), call.user),
      PathShape::ObjectPath);
}

std::string referenceNames(IntrinsicCall& call) {
  const ObjectPath path = associatedPath(call);
  return pathsAnswer(
      headOf(call), call.nameSpace.referenceNames(path, associationFilter(call), call.user),
      PathShape::ObjectPath);
}

using Names = std::vector<const char*>;

Names operator+(Names left, const Names& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

struct Operation {
  const char* name;
  Names parameters;
  std::string (*answer)(IntrinsicCall& call);
};

const std::vector<Operation>& operations() {
  static const Names CONTENT = {"IncludeQualifiers", "IncludeClassOrigin", "PropertyList"};
  static const Names ASSOCIATION = {"ObjectName", "AssocClass", "ResultClass", "Role", "ResultRole"};
  static const Names REFERENCE = {"ObjectName", "ResultClass", "Role"};
  static const std::vector<Operation> table = {
      {"GetClass", CONTENT + Names{"ClassName", "LocalOnly"}, getClass},
      {"EnumerateClasses",
       {"ClassName", "DeepInheritance", "LocalOnly", "IncludeQualifiers", "IncludeClassOrigin"},
       enumerateClasses},
      {"EnumerateClassNames", {"ClassName", "DeepInheritance"}, enumerateClassNames},
      {"EnumerateInstances", CONTENT + Names{"ClassName", "LocalOnly", "DeepInheritance"},
       enumerateInstances},
      {"EnumerateInstanceNames", {"ClassName"}, enumerateInstanceNames},
      {"GetInstance", CONTENT + Names{"InstanceName", "LocalOnly"}, getInstance},
      {"GetProperty", {"InstanceName", "PropertyName"}, getProperty},
      {"CreateInstance", {"NewInstance"}, createInstance},
      {"ModifyInstance", {"ModifiedInstance", "IncludeQualifiers", "PropertyList"}, modifyInstance},
      {"DeleteInstance", {"InstanceName"}, deleteInstance},
      {"ExecQuery", {"QueryLanguage", "Query"}, execQuery},
      {"Associators", CONTENT + ASSOCIATION, associators},
      {"AssociatorNames", ASSOCIATION, associatorNames},
      {"References", CONTENT + REFERENCE, references},
      {"ReferenceNames", REFERENCE, referenceNames}};
  return table;
}

void checkParameters(const RequestMessage& message, const Operation& operation) {
  std::set<std::string, NameLess> seen;
  for (const std::string& name : message.parameters()) {
    const bool known =
        std::any_of(operation.parameters.begin(), operation.parameters.end(), [&name](const char* parameter) {
          return equalNames(name, parameter);
        });
    if (!known) {
      refuseParameter(std::string(operation.name) + " has no parameter " + text::quoted(name));
    }
    if (!seen.insert(name).second) {
      refuseParameter("the parameter " + name + " comes twice");
    }
  }
}

}  // namespace

const SchemaClass& existingClass(const Schema& schema, const std::string& className) {
  const SchemaClass* known = declaredClass(schema, className);
  if (known == nullptr) {
    throw CimFailure(CMPI_RC_ERR_INVALID_CLASS, className);
  }
  return *known;
}

std::string answerIntrinsic(IntrinsicCall& call) {
  for (const Operation& operation : operations()) {
    if (equalNames(call.message.name(), operation.name)) {
      checkParameters(call.message, operation);
      return operation.answer(call);
    }
  }
  throw CimFailure(
      CMPI_RC_ERR_NOT_SUPPORTED, "the operation " + text::quoted(call.message.name()) + " is not offered");
}

}  // namespace tvp::host::cimxml
