// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_HOST_SAMPLEPROVIDER_H
#define TESTS_HOST_SAMPLEPROVIDER_H

#include "cmpimacs.h"
#include "host/broker/Broker.h"
#include "host/provider/Provider.h"
#include "host/schema/MofReader.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tvp::host::testing {

/** Classes with one property of each kind that matters. */
inline std::shared_ptr<const Schema> sampleSchema() {
  static const std::shared_ptr<const Schema> schema = MofReader::readText(
      R"(
    class Sample_Part { [Key] string Id; };
    class Sample_SpecialPart : Sample_Part { };
    class Sample_Base { [Key] string Name; boolean Flag; uint8 Small; };
    class Sample_Disk : Sample_Base {
      uint32 Count; uint64 Size; sint8 Delta; datetime When;
      uint64 Ranges[]; string Labels[];
      [EmbeddedInstance("Sample_Part")] string Part;
      Sample_Part REF Owner;
      uint32 Scan([In] uint32 Depth, [In(FALSE), Out] uint8 Level, [In(FALSE), Out] string Labels[]);
    };
    [Indication] class Sample_Alarm : CIM_ProcessIndication { string Text; };)",
      "sample.mof");
  return schema;
}

inline ObjectPath samplePath(const std::string& className = "Sample_Disk") {
  ObjectPath path;
  path.nameSpace = "root/sample";
  path.className = className;
  return path;
}

/** What the sample provider does in its next enumeration, method or filter call. */
struct SampleBehaviour {
  std::function<CMPIStatus(const CMPIContext*, const CMPIResult*, const CMPIObjectPath*)> enumerate;
  std::function<CMPIStatus(const CMPIContext*, const CMPIResult*, const CMPIArgs*, CMPIArgs*)> invoke;
  std::function<CMPIStatus(const CMPIObjectPath*, const CMPIInstance*, const char**)> modify;
  std::function<CMPIStatus(const CMPIContext*)> activate;
  /** What the other calls were given, one text per argument; a null one is "-". */
  std::vector<std::string> seen;
};

inline SampleBehaviour& sampleBehaviour() {
  static SampleBehaviour behaviour;
  return behaviour;
}

inline CMPIStatus ok() {
  return CMPIStatus{CMPI_RC_OK, nullptr};
}

/** Notes what a call was given. */
template <class... Texts>
CMPIStatus note(const char* operation, Texts... texts) {
  std::vector<std::string>& seen = sampleBehaviour().seen;
  seen = {operation};
  (seen.emplace_back(texts == nullptr ? "-" : texts), ...);
  return ok();
}

/** The interface of associations, which only notes. */
inline CMPIAssociationMI* sampleAssociations() {
  static CMPIAssociationMIFT table = {
      CMPIVersion200,
      CMPIVersion200,
      "sample",
      [](auto...) { return ok(); },
      [](auto, auto, auto, auto, auto association, auto result, auto role, auto resultRole, auto names) {
        return note(
            "associators", association, result, role, resultRole, names == nullptr ? nullptr : names[0]);
      },
      [](auto, auto, auto, auto, auto association, auto result, auto role, auto resultRole) {
        return note("associatorNames", association, result, role, resultRole);
      },
      [](auto, auto, auto, auto, auto result, auto role, auto names) {
        return note("references", result, role, names == nullptr ? nullptr : names[0]);
      },
      [](auto, auto, auto, auto, auto result, auto role) { return note("referenceNames", result, role); }};
  static CMPIAssociationMI interface { nullptr, &table };
  return &interface;
}

/** Notes the filter's parts and the flag of an indication call. */
inline CMPIStatus noteFilter(
    const char* operation, const CMPISelectExp* filter, const char* className, const CMPIObjectPath* path,
    const char* last) {
  return note(
      operation, CMGetCharsPtr(filter->ft->getString(filter, nullptr), nullptr), className,
      CMGetCharsPtr(CMGetClassName(path, nullptr), nullptr), last);
}

/** A factory of an interface with the table. */
template <class Interface, auto& table>
Interface* makeSample(const CMPIBroker*, const CMPIContext*, CMPIStatus*) {
  static Interface interface { nullptr, &table };
  return &interface;
}

inline CMPIInstanceMIFT sampleInstanceTable{};
inline CMPIMethodMIFT sampleMethodTable{};
inline CMPIIndicationMIFT sampleIndicationTable{};

/** Factories of a provider whose instance, method and indication interfaces do as sampleBehaviour() says. */
inline ProviderFactories sampleFactories() {
  sampleInstanceTable.enumerateInstances = [](auto, auto context, auto result, auto path, auto) {
    return sampleBehaviour().enumerate(context, result, path);
  };
  sampleInstanceTable.modifyInstance = [](auto, auto, auto, auto path, auto instance, auto names) {
    return sampleBehaviour().modify(path, instance, names);
  };
  sampleInstanceTable.cleanup = [](auto, auto, CMPIBoolean terminating) {
    return CMPIStatus{terminating != 0 ? CMPI_RC_OK : CMPI_RC_NEVER_UNLOAD, nullptr};
  };
  sampleMethodTable.invokeMethod = [](auto, auto context, auto result, auto, auto, auto input, auto output) {
    return sampleBehaviour().invoke(context, result, input, output);
  };
  sampleMethodTable.cleanup = [](auto...) { return ok(); };
  sampleIndicationTable.activateFilter = [](auto, auto context, auto...) {
    return sampleBehaviour().activate(context);
  };
  sampleIndicationTable.authorizeFilter = [](auto, auto, auto filter, auto className, auto path, auto owner) {
    return noteFilter("authorizeFilter", filter, className, path, owner);
  };
  sampleIndicationTable.deActivateFilter = [](auto, auto, auto filter, auto className, auto path,
                                              CMPIBoolean last) {
    return noteFilter("deActivateFilter", filter, className, path, last != 0 ? "last" : "not last");
  };
  sampleIndicationTable.cleanup = [](auto...) { return ok(); };

  ProviderFactories factories;
  factories.instance = makeSample<CMPIInstanceMI, sampleInstanceTable>;
  factories.method = makeSample<CMPIMethodMI, sampleMethodTable>;
  factories.indication = makeSample<CMPIIndicationMI, sampleIndicationTable>;
  return factories;
}

/** The texts of a broker's breaches, one per line. */
inline std::string breachTexts(const Broker& broker) {
  std::string texts;
  for (const Breach& breach : broker.breaches()) {
    texts += breach.text + "\n";
  }
  return texts;
}

}  // namespace tvp::host::testing

#endif
