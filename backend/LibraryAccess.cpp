// SPDX-License-Identifier: Apache-2.0
#include "backend/LibraryAccess.h"

#include "backend/TarvexProInterface.h"
#include "oslib/KVSLog.h"

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

std::string cutToSize(std::string text, std::size_t size) {
  if (text.size() > size) {
    constexpr unsigned int KIND_OF_BYTE = 0xC0;
    constexpr unsigned int CONTINUATION = 0x80;
    while (size > 0 && (static_cast<unsigned char>(text[size]) & KIND_OF_BYTE) == CONTINUATION) {
      --size;
    }
    text.resize(size);
  }
  return text;
}

}  // namespace tvp::cim::fwf
