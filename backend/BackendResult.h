// SPDX-License-Identifier: Apache-2.0
#ifndef BACKEND_BACKENDRESULT_H
#define BACKEND_BACKENDRESULT_H

namespace tvp::cim::fwf {

/** The results of back-end operations; clients get them as the return value of a method. */
enum BackendResult : unsigned int {
  BACKEND_DONE = 0,
  BACKEND_NO_SUCH_ROUTINE = 1,
  BACKEND_FAILED = 3  ///< wrong arguments, no adapter, or a refusal whose status is in a Ret
};

}  // namespace tvp::cim::fwf

#endif
