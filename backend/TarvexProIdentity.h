// SPDX-License-Identifier: Apache-2.0
#ifndef BACKEND_TARVEXPROIDENTITY_H
#define BACKEND_TARVEXPROIDENTITY_H

namespace tvp::cim::fwf {

class tvpCIMInstanceWrapper;

/**
 * Appends the properties of the single "TVP_TarvexProIdentity" to the instance: the product, its revisions,
 * features, limits and counts, as the storage library's adapter reports them.
 * @return BACKEND_DONE; BACKEND_FAILED, adding nothing, if there is no adapter or it cannot be queried
 * (logged)
 */
unsigned int InsertFeatureIdentityInfo(tvpCIMInstanceWrapper& wrapper);

}  // namespace tvp::cim::fwf

#endif
