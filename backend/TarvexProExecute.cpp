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
  insertRoutine(table, "CreateVirtualPool", TvpIfCreateVirtualPool, 0);
  insertRoutine(table, "DeleteVirtualPool", TvpIfDeleteVirtualPool, 0);
  insertRoutine(table, "ModifyVirtualPool", TvpIfModifyVirtualPool, 0);
  insertRoutine(table, "CreateVirtualVolume", TvpIfCreateVirtualVolume, 1);
  insertRoutine(table, "DeleteVirtualVolume", TvpIfDeleteVirtualVolume, 1);
  insertRoutine(table, "ModifyVirtualVolume", TvpIfModifyVirtualVolume, 0);
  insertRoutine(table, "FlushVirtualVolume", TvpIfFlushVirtualVolume, 0);
  insertRoutine(table, "GetVirtualVolumeStats", TvpIfGetVirtualVolumeStats, 0);
  insertRoutine(table, "ResetVirtualVolumeStats", TvpIfResetVirtualVolumeStats, 0);
  insertRoutine(table, "GetVirtualPoolMembers", TvpIfGetVirtualPoolMembers, 0);
  insertRoutine(table, "GetVirtualVolumeMembers", TvpIfGetVirtualVolumeMembers, 0);
  insertRoutine(table, "CreateDataCacheVolume", TvpIfCreateDataCacheVolume, 0);
  insertRoutine(table, "DeleteDataCacheVolume", TvpIfDeleteDataCacheVolume, 0);
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
