// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_LIFE_ANSWERTEXT_H
#define TESTS_LIFE_ANSWERTEXT_H

#include "host/provider/Provider.h"

#include <string>

namespace tvp::test {

/** Everything that a client can see of an answer, one thing on each line: status, message, values with types.
 */
std::string answerText(const host::Outcome& outcome);
std::string answerText(const host::InstancesOutcome& outcome);
std::string answerText(const host::PathsOutcome& outcome);
std::string answerText(const host::MethodOutcome& outcome);

/** An instance, its path first. */
std::string instanceText(const host::Instance& instance);

}  // namespace tvp::test

#endif
