// SPDX-License-Identifier: Apache-2.0
/**
 * Visibility of the storage library's interface. Everything else in the library is hidden.
 */
#ifndef VOLTVK_INCLUDE_VOLTVK_EXPORT_H
#define VOLTVK_INCLUDE_VOLTVK_EXPORT_H

#define VOLTVK_EXPORT __attribute__((visibility("default")))

#endif
