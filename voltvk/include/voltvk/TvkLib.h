// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_INCLUDE_VOLTVK_TVKLIB_H
#define VOLTVK_INCLUDE_VOLTVK_TVKLIB_H

#include "voltvk/RaidObject.h"
#include "voltvk/Ret.h"

#include <memory>

/** Whether the driver is available. */
class VOLTVK_EXPORT VolLib {
public:
  virtual ~VolLib();
  VolLib(const VolLib&) = delete;
  VolLib& operator=(const VolLib&) = delete;

  /** Re-reads the configuration when it has changed. Callers see it in collections made later. */
  virtual Ret refreshConfiguration() = 0;

  /** Stores the number of controllers; 0 means that the driver is not available. */
  Ret getControllerCount(unsigned long& count);

protected:
  VolLib() = default;

private:
  /** Success if the driver is available, else the reason why not. */
  virtual Ret checkDriver() = 0;
};

/**
 * The top object of the storage library. Opens the state at construction: $VOLTVK_STATE, else
 * /var/lib/voltvk/state.db, created on first use. If the state cannot be used, the object has no driver, and
 * getOpenError says why. Several objects in one process share one state; every function may be called from
 * any thread.
 */
class VOLTVK_EXPORT TvkLib : public VolLib {
public:
  TvkLib();
  ~TvkLib() override;

  Ret refreshConfiguration() override;

  /** The root of the storage tree, owned by this object; never null. */
  RaidObject* getRootObject();

  /**
   * Why there is no driver, for an administrator; empty if there is one. Valid as long as this object exists.
   */
  const char* getOpenError();

private:
  Ret checkDriver() override;

  struct State;
  std::unique_ptr<State> m_state;
};

#endif
