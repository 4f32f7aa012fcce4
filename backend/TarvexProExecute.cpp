// SPDX-License-Identifier: Apache-2.0
#include "backend/TarvexProExecute.h"

#include "backend/BackendResult.h"
#include "backend/RoutineSupport.h"
#include "backend/TarvexProInterface.h"
#include "backend/tvpCIMInstanceWrapper.h"
#include "oslib/KVSLog.h"

#include <array>
#include <utility>
#include <vector>

namespace tvp::cim::fwf {

namespace {

constexpr RoutineRow GENERAL_ROUTINES[] = {{"getRoutineList", getSupportedRoutines, 0, false}};

/** All routines; a new group is added here. */
std::array<RoutineRows, 4> allRoutines() {
  return {RoutineRows(GENERAL_ROUTINES), poolRoutines(), volumeRoutines(), dataCacheRoutines()};
}

}  // namespace

void insertRoutine(
    routineTable& table, const std::string& name, routineFunction function, unsigned int flag) {
  table.emplace(name, routineInfo{function, flag, name});
}

void initializeRoutineList(routineTable& table) {
  KvsTrace("Entering initializeRoutineList ");
  table.clear();
  for (const RoutineRows& group : allRoutines()) {
    for (const RoutineRow& row : group) {
      insertRoutine(table, row.name, row.function, row.flag);
    }
  }
  KvsTrace("Exiting initializeRoutineList ");
}

bool isServiceMethod(const std::string& name) {
  for (const RoutineRows& group : allRoutines()) {
    for (const RoutineRow& row : group) {
      if (name == row.name) {
        return row.offered;
      }
    }
  }
  return false;
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
