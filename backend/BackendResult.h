// SPDX-License-Identifier: Apache-2.0
#ifndef BACKEND_BACKENDRESULT_H
#define BACKEND_BACKENDRESULT_H

namespace tvp::cim::fwf {

/** What the operations of the back end return; clients get it as the return value of a method. */
enum BackendResult : unsigned int {
  BACKEND_DONE = 0,
  BACKEND_NO_SUCH_ROUTINE = 1,
  BACKEND_FAILED = 3  ///< wrong arguments, no adapter, or a refusal whose status travels in a Ret
};

}  // namespace tvp::cim::fwf

#endif
