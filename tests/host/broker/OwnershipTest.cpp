// SPDX-License-Identifier: Apache-2.0
#include "tests/host/SampleProvider.h"

#include <gmock/gmock.h>

#include <optional>
#include <thread>

namespace tvp::host::testing {
namespace {

using ::testing::HasSubstr;

class Ownership : public ::testing::Test {
protected:
  /** The kinds of the breaches so far, in order. */
  std::vector<BreachKind> kinds() const {
    std::vector<BreachKind> result;
    for (const Breach& breach : m_broker.breaches()) {
      result.push_back(breach.kind);
    }
    return result;
  }

  /** A context that a thread can attach with. */
  CMPIContext* preparedContext() {
    Request request(m_broker);
    return CBPrepareAttachThread(m_cmpi, request.context());
  }

  static void release(CMPIString* text) { CMRelease(text); }

  Broker m_broker{sampleSchema()};
  const CMPIBroker* m_cmpi = m_broker.cmpi();
};

TEST_F(Ownership, ObjectsEndWithTheirRequestAndResultsStay) {
  CMPIString* text = nullptr;
  std::optional<Request> request(std::in_place, m_broker);
  text = CMNewString(m_cmpi, "late", nullptr);
  CMReturnInstance(request->result(), CMNewInstance(m_cmpi, request->objectPath(samplePath()), nullptr));
  CMReturnDone(request->result());
  EXPECT_EQ(CMReturnDone(request->result()).rc, CMPI_RC_ERR_FAILED) << "a result is closed once";
  CMPIContext* context = request->context();
  request->end();
  CMPIStatus status{};
  {
    Request other(m_broker);
    EXPECT_EQ(CMGetCharsPtr(text, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
    CMGetContextEntry(context, CMPIPrincipal, &status);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
  }
  EXPECT_EQ(kinds(), (std::vector<BreachKind>{BreachKind::UsedAfterCall, BreachKind::UsedAfterCall}));
  EXPECT_THAT(
      breachTexts(m_broker), HasSubstr("CMPIString.getCharPtr was given a CMPIString whose call has ended"));
  EXPECT_EQ(request->instances().size(), 1U);
  EXPECT_TRUE(request->done());
}

TEST_F(Ownership, NestedRequestsEndByThemselves) {
  Request outer(m_broker);
  CMPIString* mine = CMNewString(m_cmpi, "outer", nullptr);
  {
    Request inner(m_broker);
    CMNewString(m_cmpi, "inner", nullptr);
  }
  EXPECT_STREQ(CMGetCharsPtr(mine, nullptr), "outer");
  EXPECT_NE(CMNewString(m_cmpi, "again", nullptr), nullptr);
  EXPECT_EQ(kinds(), std::vector<BreachKind>{});
}

TEST_F(Ownership, AReleasedObjectIsNotTouchedAgain) {
  Request request(m_broker);
  CMPIString* text = CMNewString(m_cmpi, "x", nullptr);
  CMPIObjectPath* path = request.objectPath(samplePath());
  EXPECT_EQ(CMRelease(text).rc, CMPI_RC_OK);
  EXPECT_EQ(CMRelease(path).rc, CMPI_RC_OK);
  EXPECT_EQ(CMRelease(text).rc, CMPI_RC_ERR_INVALID_HANDLE);
  CMPIValue value{};
  value.string = text;
  CMPIArgs* args = CMNewArgs(m_cmpi, nullptr);
  EXPECT_EQ(CMAddArg(args, "A", &value, CMPI_string).rc, CMPI_RC_ERR_INVALID_HANDLE);
  EXPECT_EQ(CMReturnObjectPath(request.result(), path).rc, CMPI_RC_ERR_INVALID_HANDLE);
  EXPECT_EQ(kinds(), std::vector<BreachKind>(3, BreachKind::UsedAfterRelease));
}

TEST_F(Ownership, InvalidHandlesAreAnsweredWithTheirCode) {
  Request request(m_broker);
  CMPIString* text = CMNewString(m_cmpi, "x", nullptr);
  CMPIString copied = *text;
  CMPIString empty{nullptr, text->ft};
  CMPIInstance disguised{text->hdl, nullptr};
  CMPIBroker noBroker{};
  CMPIStatus status{};
  for (const CMPIString* wrong :
       {static_cast<const CMPIString*>(nullptr), static_cast<const CMPIString*>(&copied),
        static_cast<const CMPIString*>(&empty)}) {
    status.rc = CMPI_RC_OK;
    EXPECT_EQ(text->ft->getCharPtr(wrong, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
  }
  EXPECT_EQ(CMReturnInstance(request.result(), &disguised).rc, CMPI_RC_ERR_INVALID_HANDLE);
  EXPECT_EQ(m_cmpi->eft->newString(&noBroker, "x", &status), nullptr);
  EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
  EXPECT_EQ(kinds(), std::vector<BreachKind>{});
}

TEST_F(Ownership, AThreadMustBeAttached) {
  CMPIContext* context = preparedContext();
  std::thread([this, context] {
    CMNewString(m_cmpi, "stray", nullptr);
    EXPECT_EQ(kinds(), std::vector<BreachKind>{BreachKind::ThreadNotAttached});
    m_broker.clearBreaches();
    for (int round = 0; round < 2; ++round) {
      EXPECT_EQ(CBAttachThread(m_cmpi, context).rc, CMPI_RC_OK);
    }
    release(CMNewString(m_cmpi, "own", nullptr));
    EXPECT_EQ(CBDetachThread(m_cmpi, context).rc, CMPI_RC_OK);
    EXPECT_EQ(kinds(), std::vector<BreachKind>{});
    CMNewString(m_cmpi, "stray", nullptr);
    EXPECT_EQ(kinds(), std::vector<BreachKind>{BreachKind::ThreadNotAttached});
  }).join();
  Request request(m_broker);
  EXPECT_EQ(CBAttachThread(m_cmpi, request.context()).rc, CMPI_RC_ERR_INVALID_PARAMETER)
      << "a request's own context was never prepared";
}

TEST_F(Ownership, WhatAnAttachedThreadKeepsIsALeak) {
  CMPIContext* context = preparedContext();
  std::thread([this, context] {
    CBAttachThread(m_cmpi, context);
    CMPIString* kept = CMNewString(m_cmpi, "kept", nullptr);
    for (int i = 0; i < 1000; ++i) {
      release(CMNewString(m_cmpi, "released", nullptr));
    }
    CMPIInstance* indication =
        CMNewInstance(m_cmpi, CMNewObjectPath(m_cmpi, "root", "Sample_Alarm", nullptr), nullptr);
    CMRelease(indication);
    release(CMClone(kept, nullptr));
  }).join();
  EXPECT_EQ(m_broker.unreleasedObjects(), 2U);
  m_broker.reportLeaks();
  EXPECT_EQ(kinds(), std::vector<BreachKind>(2, BreachKind::Leak));
  EXPECT_THAT(breachTexts(m_broker), HasSubstr("CMPIString \"kept\" was made outside a request"));
  EXPECT_THAT(breachTexts(m_broker), HasSubstr("CMPIObjectPath of Sample_Alarm was made outside a request"));
}

TEST_F(Ownership, ClonesOutliveTheRequest) {
  CMPIInstance* clone = nullptr;
  {
    Request request(m_broker);
    CMPIInstance* disk = CMNewInstance(m_cmpi, request.objectPath(samplePath()), nullptr);
    CMSetProperty(disk, "Name", reinterpret_cast<const CMPIValue*>("first"), CMPI_chars);
    clone = CMClone(disk, nullptr);
    CMSetProperty(disk, "Name", reinterpret_cast<const CMPIValue*>("second"), CMPI_chars);
  }
  EXPECT_EQ(*Request::read(clone).property("Name"), Value::string("first"));
  EXPECT_EQ(m_broker.unreleasedObjects(), 1U);
  Request request(m_broker);
  CMRelease(clone);
  EXPECT_EQ(m_broker.unreleasedObjects(), 0U);
}

TEST_F(Ownership, TheGraveyardIsBounded) {
  BrokerOptions options;
  options.graveyard = 4;
  Broker broker(sampleSchema(), options);
  CMPIString* last = nullptr;
  {
    Request request(broker);
    for (int i = 0; i < 100; ++i) {
      last = CMNewString(broker.cmpi(), "x", nullptr);
    }
  }
  Request request(broker);
  EXPECT_EQ(CMRelease(last).rc, CMPI_RC_ERR_INVALID_HANDLE) << "the youngest dead are still known";
}

TEST_F(Ownership, MarksAndBlocksOfMemoryEndWithTheirScope) {
  Request request(m_broker);
  CMPIString* before = CMNewString(m_cmpi, "before", nullptr);
  CMPIGcStat* mark = m_cmpi->mft->mark(m_cmpi, nullptr);
  CMPIString* after = CMNewString(m_cmpi, "after", nullptr);
  EXPECT_EQ(m_cmpi->mft->release(m_cmpi, mark).rc, CMPI_RC_OK);
  EXPECT_STREQ(CMGetCharsPtr(before, nullptr), "before");
  EXPECT_EQ(CMGetCharsPtr(after, nullptr), nullptr);

  auto* numbers = static_cast<int*>(m_cmpi->mft->cmpiCalloc(m_cmpi, 3, sizeof(int)));
  ASSERT_NE(numbers, nullptr);
  EXPECT_EQ(numbers[2], 0);
  numbers[2] = 5;
  numbers = static_cast<int*>(m_cmpi->mft->cmpiRealloc(m_cmpi, numbers, 4096));
  EXPECT_EQ(numbers[2], 5);
  EXPECT_EQ(m_cmpi->mft->cmpiCalloc(m_cmpi, SIZE_MAX, 2), nullptr);
  char* text = m_cmpi->mft->cmpiStrDup(m_cmpi, "freed with the request");
  EXPECT_STREQ(text, "freed with the request");
  m_cmpi->mft->cmpiFree(m_cmpi, numbers);
  m_cmpi->mft->freeString(m_cmpi, before);
  EXPECT_EQ(CMGetCharsPtr(before, nullptr), nullptr);
}

}  // namespace
}  // namespace tvp::host::testing
