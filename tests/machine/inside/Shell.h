// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_MACHINE_INSIDE_SHELL_H
#define TESTS_MACHINE_INSIDE_SHELL_H

#include <string>

namespace tvp::test {

/** True in the emulated machine, whose drives may be written to. */
bool isEmulatedMachine();

/** What a command of a shell prints, of the last one its errors as well, with its status at the end if that
 * is not 0. */
std::string shell(const std::string& command);

}  // namespace tvp::test

#endif
