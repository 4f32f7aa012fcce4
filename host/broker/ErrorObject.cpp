// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Conversion.h"

namespace tvp::host {
namespace {

/* Each attribute of an error has a getter and usually a setter; they differ only in the member. */

template <std::string ErrorContent::*member>
CMPIString* text(ErrorContent& content, Call& call) {
  return call.makeString(content.*member);
}

template <std::string ErrorContent::*member>
void setText(ErrorContent& content, Call&, const char* given) {
  content.*member = textOf(given);
}

template <class Code, Code ErrorContent::*member>
Code code(ErrorContent& content, Call&) {
  return content.*member;
}

template <class Code, Code ErrorContent::*member>
void setCode(ErrorContent& content, Call&, Code given) {
  content.*member = given;
}

template <Value ErrorContent::*member>
CMPIArray* list(ErrorContent& content, Call& call) {
  return toCmpi(call, content.*member).value.array;
}

/** @tparam Array setters differ in its constness */
template <Value ErrorContent::*member, class Array>
void setList(ErrorContent& content, Call& call, Array* given) {
  CMPIValue array{};
  array.array = const_cast<CMPIArray*>(given);
  const Value texts = fromCmpi(call, &array, CMPI_stringA);
  content.*member = texts.isNull() ? Value::array(CMPI_string, {}) : texts;
}

}  // namespace

CMPIErrorFT* ObjectTraits<CMPIError>::table() {
  using FT = CMPIErrorFT;
  static FT functions = objectTable<CMPIError>([](FT& table) {
    bind<&FT::getErrorType>(table, "getErrorType", code<CMPIErrorType, &Content::type>);
    bind<&FT::setErrorType>(table, "setErrorType", setCode<CMPIErrorType, &Content::type>);
    bind<&FT::getOtherErrorType>(table, "getOtherErrorType", text<&Content::otherType>);
    bind<&FT::setOtherErrorType>(table, "setOtherErrorType", setText<&Content::otherType>);
    bind<&FT::getOwningEntity>(table, "getOwningEntity", text<&Content::owner>);
    bind<&FT::getMessageID>(table, "getMessageID", text<&Content::messageId>);
    bind<&FT::getMessage>(table, "getMessage", text<&Content::message>);
    bind<&FT::getPerceivedSeverity>(
        table, "getPerceivedSeverity", code<CMPIErrorSeverity, &Content::severity>);
    bind<&FT::getProbableCause>(table, "getProbableCause", code<CMPIErrorProbableCause, &Content::cause>);
    bind<&FT::getProbableCauseDescription>(
        table, "getProbableCauseDescription", text<&Content::causeDescription>);
    bind<&FT::setProbableCauseDescription>(
        table, "setProbableCauseDescription", setText<&Content::causeDescription>);
    bind<&FT::getRecommendedActions>(table, "getRecommendedActions", list<&Content::recommendedActions>);
    bind<&FT::setRecommendedActions>(
        table, "setRecommendedActions", setList<&Content::recommendedActions, const CMPIArray>);
    bind<&FT::getErrorSource>(table, "getErrorSource", text<&Content::source>);
    bind<&FT::setErrorSource>(table, "setErrorSource", setText<&Content::source>);
    bind<&FT::getErrorSourceFormat>(
        table, "getErrorSourceFormat", code<CMPIErrorSrcFormat, &Content::sourceFormat>);
    bind<&FT::setErrorSourceFormat>(
        table, "setErrorSourceFormat", setCode<CMPIErrorSrcFormat, &Content::sourceFormat>);
    bind<&FT::getOtherErrorSourceFormat>(
        table, "getOtherErrorSourceFormat", text<&Content::otherSourceFormat>);
    bind<&FT::setOtherErrorSourceFormat>(
        table, "setOtherErrorSourceFormat", setText<&Content::otherSourceFormat>);
    bind<&FT::getCIMStatusCode>(table, "getCIMStatusCode", code<CMPIrc, &Content::statusCode>);
    bind<&FT::getCIMStatusCodeDescription>(
        table, "getCIMStatusCodeDescription", text<&Content::statusDescription>);
    bind<&FT::setCIMStatusCodeDescription>(
        table, "setCIMStatusCodeDescription", setText<&Content::statusDescription>);
    bind<&FT::getMessageArguments>(table, "getMessageArguments", list<&Content::messageArguments>);
    bind<&FT::setMessageArguments>(
        table, "setMessageArguments", setList<&Content::messageArguments, CMPIArray>);
  });
  return &functions;
}

}  // namespace tvp::host
