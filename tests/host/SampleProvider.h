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
      [](CMPIAssociationMI*, const CMPIContext*, CMPIBoolean) { return ok(); },
      [](CMPIAssociationMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*,
         const char* association, const char* result, const char* role, const char* resultRole,
         const char** names) {
        return note(
            "associators", association, result, role, resultRole, names == nullptr ? nullptr : names[0]);
      },
      [](CMPIAssociationMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*,
         const char* association, const char* result, const char* role,
         const char* resultRole) { return note("associatorNames", association, result, role, resultRole); },
      [](CMPIAssociationMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*, const char* result,
         const char* role, const char** names) {
        return note("references", result, role, names == nullptr ? nullptr : names[0]);
      },
      [](CMPIAssociationMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*, const char* result,
         const char* role) { return note("referenceNames", result, role); }};
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

/** Factories of a provider whose instance, method and indication interfaces do as sampleBehaviour() says. */
inline ProviderFactories sampleFactories() {
  static CMPIInstanceMIFT instanceTable{};
  instanceTable.enumerateInstances = [](CMPIInstanceMI*, const CMPIContext* context, const CMPIResult* result,
                                        const CMPIObjectPath* path, const char**) {
    return sampleBehaviour().enumerate(context, result, path);
  };
  instanceTable.modifyInstance = [](CMPIInstanceMI*, const CMPIContext*, const CMPIResult*,
                                    const CMPIObjectPath* path, const CMPIInstance* instance,
                                    const char** names) {
    return sampleBehaviour().modify(path, instance, names);
  };
  instanceTable.cleanup = [](CMPIInstanceMI*, const CMPIContext*, CMPIBoolean terminating) {
    return CMPIStatus{terminating != 0 ? CMPI_RC_OK : CMPI_RC_NEVER_UNLOAD, nullptr};
  };
  static CMPIMethodMIFT methodTable{};
  methodTable.invokeMethod = [](CMPIMethodMI*, const CMPIContext* context, const CMPIResult* result,
                                const CMPIObjectPath*, const char*, const CMPIArgs* input, CMPIArgs* output) {
    return sampleBehaviour().invoke(context, result, input, output);
  };
  methodTable.cleanup = [](CMPIMethodMI*, const CMPIContext*, CMPIBoolean) { return ok(); };
  static CMPIIndicationMIFT indicationTable{};
  indicationTable.activateFilter = [](CMPIIndicationMI*, const CMPIContext* context, const CMPISelectExp*,
                                      const char*, const CMPIObjectPath*,
                                      CMPIBoolean) { return sampleBehaviour().activate(context); };
  indicationTable.authorizeFilter = [](CMPIIndicationMI*, const CMPIContext*, const CMPISelectExp* filter,
                                       const char* className, const CMPIObjectPath* path, const char* owner) {
    return noteFilter("authorizeFilter", filter, className, path, owner);
  };
  indicationTable.deActivateFilter = [](CMPIIndicationMI*, const CMPIContext*, const CMPISelectExp* filter,
                                        const char* className, const CMPIObjectPath* path, CMPIBoolean last) {
    return noteFilter("deActivateFilter", filter, className, path, last != 0 ? "last" : "not last");
  };
  indicationTable.cleanup = [](CMPIIndicationMI*, const CMPIContext*, CMPIBoolean) { return ok(); };

  ProviderFactories factories;
  factories.instance = [](const CMPIBroker*, const CMPIContext*, CMPIStatus*) {
    static CMPIInstanceMI interface { nullptr, &instanceTable };
    return &interface;
  };
  factories.method = [](const CMPIBroker*, const CMPIContext*, CMPIStatus*) {
    static CMPIMethodMI interface { nullptr, &methodTable };
    return &interface;
  };
  factories.indication = [](const CMPIBroker*, const CMPIContext*, CMPIStatus*) {
    static CMPIIndicationMI interface { nullptr, &indicationTable };
    return &interface;
  };
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
