// SPDX-License-Identifier: Apache-2.0
#include "backend/TarvexProExecute.h"

#include "backend/BackendResult.h"
#include "backend/RoutineSupport.h"
#include "backend/TarvexProInterface.h"
#include "backend/tvpCIMInstanceWrapper.h"
#include "oslib/KVSLog.h"

#include <utility>
#include <vector>

namespace tvp::cim::fwf {

void insertRoutine(
    routineTable& table, const std::string& name, routineFunction function, unsigned int flag) {
  table.emplace(name, routineInfo{function, flag, name});
}

void initializeRoutineList(routineTable& table) {
  KvsTrace("Entering initializeRoutineList ");
  table.clear();
  insertRoutine(table, "getRoutineList", getSupportedRoutines, 0);
  insertPoolRoutines(table);
  insertVolumeRoutines(table);
  insertDataCacheRoutines(table);
  KvsTrace("Exiting initializeRoutineList ");
}

unsigned int getSupportedRoutines(const CIMObjectPath&, const CIMMethodParam&, CIMMethodParam& out) {
  traceRoutineEntry("getSupportedRoutines");
  std::vector<std::string> names;
  if (TVPInterface* gateway = TVPInterface::getInstance()) {
    gateway->TVPGetSupportedRoutines(names);
  }
  out.addArgument(makeProperty("Routine_List", std::move(names)));
  return BACKEND_DONE;
}

}  // namespace tvp::cim::fwf
