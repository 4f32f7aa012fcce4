// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_CIMXML_MESSAGE_SAMPLEMESSAGES_H
#define TESTS_CIMXML_MESSAGE_SAMPLEMESSAGES_H

#include "host/cimxml/message/Failure.h"
#include "host/schema/MofReader.h"

#include <memory>
#include <string>

namespace tvp::host::cimxml::test {

/** A message around a content such as a SIMPLEREQ. */
inline std::string message(const std::string& content) {
  return R"(<?xml version="1.0" encoding="UTF-8"?><CIM CIMVERSION="2.0" DTDVERSION="2.0">)"
         R"(<MESSAGE ID="a&amp;7" PROTOCOLVERSION="1.0">)" +
         content + "</MESSAGE></CIM>";
}

inline const std::string PLACE =
    R"(<LOCALNAMESPACEPATH><NAMESPACE NAME="root"/><NAMESPACE NAME="x"/></LOCALNAMESPACEPATH>)";

inline std::string intrinsic(const std::string& parameters) {
  return message(
      "<SIMPLEREQ><IMETHODCALL NAME=\"GetInstance\">" + PLACE + parameters + "</IMETHODCALL></SIMPLEREQ>");
}

inline std::string parameter(const std::string& content) {
  return intrinsic("<IPARAMVALUE NAME=\"P\">" + content + "</IPARAMVALUE>");
}

inline std::string methodCall(const std::string& parameters) {
  return message(
      R"(<SIMPLEREQ><METHODCALL NAME="Grow"><LOCALCLASSPATH>)" + PLACE +
      R"(<CLASSNAME NAME="T_Pool"/></LOCALCLASSPATH>)" + parameters + "</METHODCALL></SIMPLEREQ>");
}

inline std::shared_ptr<const Schema> sampleSchema() {
  static const std::shared_ptr<const Schema> schema = MofReader::readText(
      R"(class T_Base { [Key, Description("who <it> is")] string Name; uint8 Level; };
         class T_Pool : T_Base { [Key] uint16 Number; uint32 Sizes[]; datetime Made; T_Base REF Parent;
           [EmbeddedInstance("T_Base")] string Part;
           uint32 Grow(uint8 Steps[], [In(false), Out] T_Base REF Result, string Note); };)",
      "sample.mof");
  return schema;
}

/** What the action throws as a CimFailure; empty if nothing. */
template <class Action>
std::string failureOf(Action action) {
  try {
    action();
  } catch (const CimFailure& failure) {
    return failure.code() == CMPI_RC_ERR_INVALID_PARAMETER ? failure.what() : "another status";
  }
  return "";
}

/** What the action throws as a BadMessage: its CIMError and text; empty if nothing. */
template <class Action>
std::string badMessageOf(Action action) {
  try {
    action();
  } catch (const BadMessage& error) {
    return error.cimError() + ": " + error.what();
  }
  return "";
}

}  // namespace tvp::host::cimxml::test

#endif
