// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_LIFE_UNUSUALREQUESTS_H
#define TESTS_LIFE_UNUSUALREQUESTS_H

#include "life/Life.h"

namespace tvp::test {

/** The functions of the four interfaces without their arguments. */
void askWithoutArguments(Life& life);

/** Keys, properties and arguments of every type. */
void askWithEveryType(Life& life);

/** Requests of every kind while one function of the object manager after the other fails. */
void askWhileCallsFail(Life& life);

}  // namespace tvp::test

#endif
