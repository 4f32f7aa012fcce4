// SPDX-License-Identifier: Apache-2.0
#include "backend/LibraryAccess.h"

#include "backend/TarvexProInterface.h"
#include "oslib/KVSLog.h"
#include "text/Utf8.h"

namespace tvp::cim::fwf {

namespace {

TvkLib* getLibrary() {
  TVPInterface* gateway = TVPInterface::getInstance();
  return gateway == nullptr ? nullptr : gateway->getTarvexProLib();
}

}  // namespace

RaidObject* getTarvexProRoot() {
  TvkLib* library = getLibrary();
  return library == nullptr ? nullptr : library->getRootObject();
}

TvkAdapter* getTvkAdapter() {
  RaidObject* root = getTarvexProRoot();
  return root == nullptr ? nullptr : static_cast<TvkAdapter*>(root->getObject(0));
}

void refreshTarvexProObjects() {
  try {
    if (TvkLib* library = getLibrary()) {
      library->refreshConfiguration();
    }
  } catch (...) {
    KvsTrace("Exception caught in Tvk Lib method: TvkLib::refreshConfiguration() ");
  }
}

bool isDriverAvailable() {
  if (TVPInterface* gateway = TVPInterface::getInstance()) {
    gateway->GetConfig();
  }
  TvkLib* library = getLibrary();
  if (library == nullptr) {
    throw std::bad_alloc();  // there was no memory for it, which does not mean that there is no driver
  }
  unsigned long controllers = 0;
  library->getControllerCount(controllers);
  return controllers != 0;
}

std::string cutToSize(std::string text, std::size_t size) {
  text.resize(text::cutToSize(text, size).size());
  return text;
}

}  // namespace tvp::cim::fwf
