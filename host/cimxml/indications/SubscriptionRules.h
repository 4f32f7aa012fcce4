// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_INDICATIONS_SUBSCRIPTIONRULES_H
#define HOST_CIMXML_INDICATIONS_SUBSCRIPTIONRULES_H

#include "host/cimxml/indications/Query.h"
#include "host/schema/Schema.h"
#include "host/schema/Value.h"

#include <string>

namespace tvp::host::cimxml {

/** Values of SubscriptionState. */
constexpr std::uint16_t SUBSCRIPTION_ENABLED = 2;
constexpr std::uint16_t SUBSCRIPTION_DISABLED = 4;

/** What a client has given, as a whole instance with its path: values of the class's types, and the usual
 * ones for what was left out. @throws CimFailure for what the class does not have */
Instance completeInstance(const Instance& given, const Schema& interop);

/**
 * The query of a filter.
 * @param classes those of the provider; they have to outlive the query
 * @param nameSpace that of the provider's classes
 * @throws CimFailure when it cannot be used, or its namespaces have no indications
 */
Query queryOf(const Instance& filter, const Schema& classes, const std::string& nameSpace);

/** @throws CimFailure for a destination that cannot be delivered to */
void checkHandler(const Instance& handler);

/** @throws CimFailure for a state or policy that is not offered */
void checkSubscription(const Instance& subscription);

/** Whether a subscription is to deliver. */
bool isEnabled(const Instance& subscription);

/** A property's text; empty when it is null. */
std::string textOf(const Instance& instance, const std::string& property);

}  // namespace tvp::host::cimxml

#endif
