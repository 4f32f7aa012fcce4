// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Conversion.h"
#include "host/broker/EntryPoint.h"

namespace tvp::host {
namespace {

/* Each attribute of an error has a getter and mostly a setter; they differ in the member alone. */

template <std::string ErrorContent::*member>
CMPIString* getText(const CMPIError* error, CMPIStatus* status) {
  return valueCall<CMPIString*>(
      error, "CMPIError.get", status, [](ErrorContent& content, BrokerState& broker, CMPIrc&) {
        return makeString(broker, content.*member);
      });
}

template <std::string ErrorContent::*member>
CMPIStatus setText(CMPIError* error, const char* text) {
  return statusCall(error, "CMPIError.set", [=](ErrorContent& content, BrokerState&) {
    content.*member = textOf(text);
    return CMPI_RC_OK;
  });
}

template <class Code, Code ErrorContent::*member>
Code getCode(const CMPIError* error, CMPIStatus* status) {
  return valueCall<Code>(error, "CMPIError.get", status, [](ErrorContent& content, BrokerState&, CMPIrc&) {
    return content.*member;
  });
}

template <class Code, Code ErrorContent::*member>
CMPIStatus setCode(CMPIError* error, const Code code) {
  return statusCall(error, "CMPIError.set", [=](ErrorContent& content, BrokerState&) {
    content.*member = code;
    return CMPI_RC_OK;
  });
}

template <Value ErrorContent::*member>
CMPIArray* getTexts(const CMPIError* error, CMPIStatus* status) {
  return valueCall<CMPIArray*>(
      error, "CMPIError.get", status, [](ErrorContent& content, BrokerState& broker, CMPIrc&) {
        return toCmpi(broker, content.*member).value.array;
      });
}

template <Value ErrorContent::*member>
CMPIStatus takeTexts(CMPIError* error, const CMPIArray* texts) {
  return statusCall(error, "CMPIError.set", [=](ErrorContent& content, BrokerState&) -> CMPIrc {
    CMPIValue given{};
    given.array = const_cast<CMPIArray*>(texts);
    Value value;
    const CMPIrc code = fromCmpi(&given, CMPI_stringA, value);
    if (code == CMPI_RC_OK) {
      content.*member = value.isNull() ? textArray({}) : std::move(value);
    }
    return code;
  });
}

CMPIStatus setMessageArguments(CMPIError* error, CMPIArray* texts) {
  return takeTexts<&ErrorContent::messageArguments>(error, texts);
}

}  // namespace

template <>
CMPIErrorFT* functionTable<CMPIError>() {
  static CMPIErrorFT table = {
      CMPIVersion200,
      releaseObject<CMPIError>,
      cloneObject<CMPIError>,
      getCode<CMPIErrorType, &ErrorContent::type>,
      getText<&ErrorContent::otherType>,
      getText<&ErrorContent::owner>,
      getText<&ErrorContent::messageId>,
      getText<&ErrorContent::message>,
      getCode<CMPIErrorSeverity, &ErrorContent::severity>,
      getCode<CMPIErrorProbableCause, &ErrorContent::cause>,
      getText<&ErrorContent::causeDescription>,
      getTexts<&ErrorContent::recommendedActions>,
      getText<&ErrorContent::source>,
      getCode<CMPIErrorSrcFormat, &ErrorContent::sourceFormat>,
      getText<&ErrorContent::otherSourceFormat>,
      getCode<CMPIrc, &ErrorContent::statusCode>,
      getText<&ErrorContent::statusDescription>,
      getTexts<&ErrorContent::messageArguments>,
      setCode<CMPIErrorType, &ErrorContent::type>,
      setText<&ErrorContent::otherType>,
      setText<&ErrorContent::causeDescription>,
      takeTexts<&ErrorContent::recommendedActions>,
      setText<&ErrorContent::source>,
      setCode<CMPIErrorSrcFormat, &ErrorContent::sourceFormat>,
      setText<&ErrorContent::otherSourceFormat>,
      setText<&ErrorContent::statusDescription>,
      setMessageArguments};
  return &table;
}

}  // namespace tvp::host
