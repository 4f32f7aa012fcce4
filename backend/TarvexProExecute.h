// SPDX-License-Identifier: Apache-2.0
#ifndef BACKEND_TARVEXPROEXECUTE_H
#define BACKEND_TARVEXPROEXECUTE_H

#include "CIM/Framework/CIMMethodParam.h"
#include "CIM/Framework/CIMObjectPath.h"

#include <cstddef>
#include <map>
#include <string>

namespace tvp::cim::fwf {

/** Executes one extrinsic method: reads in, fills out. */
using routineFunction =
    unsigned int (*)(const CIMObjectPath& path, const CIMMethodParam& in, CIMMethodParam& out);

/** One entry of the routine table. */
struct routineInfo {
  routineFunction function;
  unsigned int flag;  ///< 1 for the creation and deletion of volumes; kept with the entry but never read
  std::string name;
};

/** Method names in ascending order, and the routines that execute them. */
using routineTable = std::map<std::string, routineInfo>;

/** Adds one entry; a name that already exists keeps its routine. */
void insertRoutine(routineTable& table, const std::string& name, routineFunction function, unsigned int flag);

/** Clears the table and fills it with all routines. */
void initializeRoutineList(routineTable& table);

/** Whether clients can call a routine as a method of TVP_TierService. Names are compared exactly. */
bool isServiceMethod(const std::string& name);

/** The routine that returns the names of all of them. */
unsigned int getSupportedRoutines(const CIMObjectPath& path, const CIMMethodParam& in, CIMMethodParam& out);

/** A routine as its source file lists it. */
struct RoutineRow {
  const char* name;
  routineFunction function;
  unsigned int flag = 0;  ///< as in routineInfo
  bool offered = true;    ///< as a method of TVP_TierService; false: only the gateway executes it by name
};

/** The rows of one source file, in the order in which they are added to the table. */
class RoutineRows {
public:
  /** @param rows must outlive this object */
  template <std::size_t COUNT>
  constexpr explicit RoutineRows(const RoutineRow (&rows)[COUNT]) : m_begin(rows), m_end(rows + COUNT) {}

  const RoutineRow* begin() const { return m_begin; }
  const RoutineRow* end() const { return m_end; }

private:
  const RoutineRow* m_begin;
  const RoutineRow* m_end;
};

/**
 * The routines of each file. A routine returns BACKEND_DONE, or BACKEND_FAILED for arguments that
 * are missing or too many (logged, no output) and for a refusal by the storage library, whose status is the
 * output "RetStat" ("ReturnCode" for TvpIfResetVirtualVolumeStats). An argument that is null, of another type
 * or without an element reads as 0 or the empty text, which is left to the library to check. Safe from any
 * thread.
 */
RoutineRows poolRoutines();
RoutineRows volumeRoutines();
RoutineRows dataCacheRoutines();

}  // namespace tvp::cim::fwf

#endif
