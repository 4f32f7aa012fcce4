// SPDX-License-Identifier: Apache-2.0
#ifndef OSLIB_KVSSTATUS_H
#define OSLIB_KVSSTATUS_H

/** What the functions of the platform layer return. */
enum KvsStatus : int {
  KVS_DONE = 0,
  KVS_FAILED = 1,
  KVS_MISSING_ARGUMENT = 3  ///< a null pointer or handle
};

#endif
