// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_CIMXML_SERVICE_SERVICEFIXTURE_H
#define TESTS_CIMXML_SERVICE_SERVICEFIXTURE_H

#include "host/cimxml/server/CimService.h"
#include "tests/cimxml/SampleServer.h"

namespace tvp::host::cimxml::testing {

/** Elements of requests. */
inline std::string textParameter(const std::string& name, const std::string& text) {
  return "<IPARAMVALUE NAME=\"" + name + "\"><VALUE>" + text + "</VALUE></IPARAMVALUE>";
}

inline std::string classParameter(const std::string& name, const std::string& className) {
  return "<IPARAMVALUE NAME=\"" + name + "\"><CLASSNAME NAME=\"" + className + "\"/></IPARAMVALUE>";
}

inline std::string parameter(const std::string& name, const std::string& content) {
  return "<IPARAMVALUE NAME=\"" + name + "\">" + content + "</IPARAMVALUE>";
}

inline std::string
instanceName(const std::string& className, const std::string& key, const std::string& value) {
  return "<INSTANCENAME CLASSNAME=\"" + className + "\"><KEYBINDING NAME=\"" + key +
         "\"><KEYVALUE VALUETYPE=\"string\">" + value + "</KEYVALUE></KEYBINDING></INSTANCENAME>";
}

inline std::string property(const std::string& name, const std::string& value) {
  return "<PROPERTY NAME=\"" + name + "\" TYPE=\"string\"><VALUE>" + value + "</VALUE></PROPERTY>";
}

inline std::string localNamespace(const std::string& nameSpace) {
  std::string path = "<LOCALNAMESPACEPATH>";
  for (std::size_t begin = 0; begin <= nameSpace.size();) {
    const std::size_t end = std::min(nameSpace.find('/', begin), nameSpace.size());
    path += "<NAMESPACE NAME=\"" + nameSpace.substr(begin, end - begin) + "\"/>";
    begin = end + 1;
  }
  return path + "</LOCALNAMESPACEPATH>";
}

inline std::string document(const std::string& call) {
  return "<?xml version=\"1.0\" encoding=\"utf-8\"?><CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE "
         "ID=\"42\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>" +
         call + "</SIMPLEREQ></MESSAGE></CIM>";
}

/** A service on the sample provider, which has a base "b" and the disks "d1" and "d2". */
class ServiceTest : public SampleServer {
protected:
  ServiceTest() {
    sampleBehaviour().enumerate =
        [this](const CMPIContext* context, const CMPIResult* result, const CMPIObjectPath* path) {
          const CMPIData principal = CMGetContextEntry(context, CMPIPrincipal, nullptr);
          m_principal = CMGetCharsPtr(principal.value.string, nullptr);
          const std::string className = CMGetCharsPtr(CMGetClassName(path, nullptr), nullptr);
          if (className == "Sample_Base") {
            answer(result, path, "b", 0);
          } else if (className == "Sample_Disk") {
            answer(result, path, "d1", 1);
            answer(result, path, "d2", 2);
          }
          return CMReturnDone(result);
        };
    sampleInstanceTable.enumerateInstanceNames = [](auto, auto, auto result, auto path) {
      CMAddKey(
          const_cast<CMPIObjectPath*>(path), "Name", reinterpret_cast<const CMPIValue*>("d1"), CMPI_chars);
      CMReturnObjectPath(result, path);
      return CMReturnDone(result);
    };
    sampleInstanceTable.getInstance = [](auto, auto context, auto result, auto path, auto) {
      const CMPIData name = CMGetKey(path, "Name", nullptr);
      return std::string(CMGetCharsPtr(name.value.string, nullptr)) == "missing"
                 ? CMReturnDone(result)
                 : sampleBehaviour().enumerate(context, result, path);
    };
    sampleInstanceTable.createInstance = [](auto, auto, auto result, auto, auto) {
      return CMReturnDone(result);
    };
    sampleInstanceTable.deleteInstance = [](auto, auto, auto, auto) {
      return CMPIStatus{CMPI_RC_ERR_NOT_SUPPORTED, nullptr};
    };
    sampleInstanceTable.execQuery = [](auto, auto, auto, auto, auto, auto) {
      return CMPIStatus{CMPI_RC_ERR_NOT_SUPPORTED, nullptr};
    };
  }

  void answer(const CMPIResult* result, const CMPIObjectPath* path, const char* name, CMPIUint32 count) {
    CMPIInstance* instance = CMNewInstance(m_broker.cmpi(), path, nullptr);
    CMPIValue number{};
    number.uint32 = count;
    CMSetProperty(instance, "Name", reinterpret_cast<const CMPIValue*>(name), CMPI_chars);
    if (count != 0) {
      CMSetProperty(instance, "Count", &number, CMPI_uint32);
    }
    CMReturnInstance(result, instance);
  }

  /** The call of an operation, with the headers that belong to it. */
  static HttpCall
  call(const std::string& operation, const std::string& nameSpace, const std::string& parameters) {
    HttpCall call;
    call.operation = "MethodCall";
    call.method = operation;
    call.object = nameSpace;
    call.user = "ann";
    call.body = document(
        "<IMETHODCALL NAME=\"" + operation + "\">" + localNamespace(nameSpace) + parameters +
        "</IMETHODCALL>");
    return call;
  }

  HttpReply ask(const std::string& operation, const std::string& nameSpace, const std::string& parameters) {
    return m_service.answer(call(operation, nameSpace, parameters));
  }

  /** A method of the disk d1. */
  HttpReply invoke(
      const std::string& method, const std::string& arguments, const std::string& nameSpace = "root/sample",
      const std::string& className = "Sample_Disk") {
    HttpCall call = ServiceTest::call(method, nameSpace, "");
    call.object = nameSpace + ":" + className + ".Name=\"d1\"";
    call.body = document(
        "<METHODCALL NAME=\"" + method + "\"><LOCALINSTANCEPATH>" + localNamespace(nameSpace) +
        instanceName(className, "Name", "d1") + "</LOCALINSTANCEPATH>" + arguments + "</METHODCALL>");
    return m_service.answer(call);
  }

  std::string m_principal;
  const std::unique_ptr<Subscriptions> m_subscriptions = subscriptions(options());
  CimService m_service{m_provider, sampleSchema(), interopSchema(), *m_subscriptions, {"root/sample"}};
};

/** How often a text is in another one. */
inline std::size_t countOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

}  // namespace tvp::host::cimxml::testing

#endif
