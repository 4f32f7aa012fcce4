// SPDX-License-Identifier: Apache-2.0
#include "tests/host/SampleProvider.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace tvp::host::testing {
namespace {

/** What providers read and write beside instances: paths, qualifiers, times, contexts, errors. */
class BrokerObjects : public ::testing::Test {
protected:
  std::string read(CMPIString* text) { return Request::read(text); }

  Broker m_broker{sampleSchema()};
  const CMPIBroker* m_cmpi = m_broker.cmpi();
  Request m_request{m_broker};
  CMPIStatus m_status{};
};

/** Whether every slot of a function table is filled; the version stands before them. */
template <class Table>
bool isComplete(const Table* table) {
  const auto* words = reinterpret_cast<const void* const*>(table);
  return std::all_of(
      words + 1, words + sizeof *table / sizeof *words, [](const void* slot) { return slot != nullptr; });
}

TEST_F(BrokerObjects, HaveEveryFunctionOfTheStandard) {
  EXPECT_TRUE(isComplete(m_cmpi->bft));
  EXPECT_TRUE(isComplete(m_cmpi->eft));
  EXPECT_TRUE(isComplete(m_cmpi->xft));
  EXPECT_TRUE(isComplete(m_cmpi->mft));
  const CMPIObjectPath* path = m_request.objectPath(samplePath());
  EXPECT_TRUE(isComplete(path->ft));
  EXPECT_TRUE(isComplete(m_request.instance({samplePath(), {}})->ft));
  EXPECT_TRUE(isComplete(m_request.arguments({})->ft));
  EXPECT_TRUE(isComplete(m_request.selectExpression("", "")->ft));
  EXPECT_TRUE(isComplete(m_request.context()->ft));
  EXPECT_TRUE(isComplete(m_request.result()->ft));
  EXPECT_TRUE(isComplete(CMNewString(m_cmpi, "", nullptr)->ft));
  EXPECT_TRUE(isComplete(CMNewArray(m_cmpi, 1, CMPI_string, nullptr)->ft));
  EXPECT_TRUE(isComplete(CMNewDateTime(m_cmpi, nullptr)->ft));
  EXPECT_TRUE(isComplete(CBEnumInstances(m_cmpi, m_request.context(), path, nullptr, nullptr)->ft));
  EXPECT_TRUE(isComplete(
      m_cmpi->eft
          ->newCMPIError(
              m_cmpi, "", "", "", CMPIErrorSevUnknown, CMPIErrorProbCauseUnknown, CMPI_RC_OK, nullptr)
          ->ft));
}

TEST_F(BrokerObjects, AnUpcallThatFailsSaysWhy) {
  BrokerHandlers handlers;
  handlers.onUpcall = [](const Upcall&) {
    return UpcallAnswer{CMPI_RC_ERR_ACCESS_DENIED, "not for you", {}, {}};
  };
  m_broker.setHandlers(handlers);
  EXPECT_EQ(
      CBGetInstance(m_cmpi, m_request.context(), m_request.objectPath(samplePath()), nullptr, &m_status),
      nullptr);
  EXPECT_EQ(m_status.rc, CMPI_RC_ERR_ACCESS_DENIED);
  EXPECT_EQ(read(m_status.msg), "not for you");
}

TEST_F(BrokerObjects, APathHoldsItsParts) {
  CMPIObjectPath* path = CMNewObjectPath(m_cmpi, nullptr, "Sample_Disk", nullptr);
  EXPECT_EQ(read(CMGetNameSpace(path, nullptr)), "") << "a path needs no namespace";
  CMSetNameSpace(path, "root/a");
  CMSetHostname(path, "node");
  EXPECT_EQ(read(CMGetNameSpace(path, nullptr)), "root/a");
  EXPECT_EQ(read(CMGetHostname(path, nullptr)), "node");
  EXPECT_EQ(read(CMGetClassName(path, nullptr)), "Sample_Disk");

  CMPIObjectPath* other = CMNewObjectPath(m_cmpi, "root/b", "Sample_Part", nullptr);
  EXPECT_EQ(path->ft->setNameSpaceFromObjectPath(other, path).rc, CMPI_RC_OK);
  EXPECT_EQ(read(other->ft->toString(other, nullptr)), "root/a:Sample_Part") << "the host stays behind";
  EXPECT_EQ(path->ft->setHostAndNameSpaceFromObjectPath(other, path).rc, CMPI_RC_OK);
  EXPECT_EQ(read(other->ft->toString(other, nullptr)), "//node/root/a:Sample_Part");
  EXPECT_EQ(path->ft->setNameSpaceFromObjectPath(other, nullptr).rc, CMPI_RC_ERR_INVALID_HANDLE);

  EXPECT_EQ(CMNewObjectPath(m_cmpi, "root", nullptr, &m_status), nullptr);
  EXPECT_EQ(m_status.rc, CMPI_RC_ERR_INVALID_PARAMETER);
}

TEST_F(BrokerObjects, QualifiersComeFromTheSchema) {
  CMPIObjectPath* disk = m_request.objectPath(samplePath());
  const CMPIObjectPathFT* table = disk->ft;
  EXPECT_EQ(table->getPropertyQualifier(disk, "name", "key", &m_status).value.boolean, 1);
  EXPECT_EQ(m_status.rc, CMPI_RC_OK);
  EXPECT_EQ(table->getParameterQualifier(disk, "Scan", "Level", "out", &m_status).value.boolean, 1);
  CMPIObjectPath* alarm = m_request.objectPath(samplePath("Sample_Alarm"));
  EXPECT_EQ(table->getClassQualifier(alarm, "Indication", &m_status).value.boolean, 1);

  table->getPropertyQualifier(disk, "Nothing", "key", &m_status);
  EXPECT_EQ(m_status.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
  table->getParameterQualifier(disk, "Nothing", "Level", "out", &m_status);
  EXPECT_EQ(m_status.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
  table->getMethodQualifier(disk, "Scan", "Nothing", &m_status);
  EXPECT_EQ(m_status.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
  table->getClassQualifier(m_request.objectPath(samplePath("Sample_Nothing")), "Version", &m_status);
  EXPECT_EQ(m_status.rc, CMPI_RC_ERR_INVALID_CLASS);
}

TEST_F(BrokerObjects, AnInstanceKeepsItsClass) {
  CMPIInstance* disk = CMNewInstance(m_cmpi, m_request.objectPath(samplePath()), nullptr);
  ObjectPath keyed = samplePath("sample_disk");
  keyed.keys = {{"Name", Value::string("sda")}};
  EXPECT_EQ(disk->ft->setObjectPath(disk, m_request.objectPath(keyed)).rc, CMPI_RC_OK);
  EXPECT_EQ(Request::read(CMGetObjectPath(disk, nullptr)), keyed);
  EXPECT_EQ(
      disk->ft->setObjectPath(disk, m_request.objectPath(samplePath("Sample_Part"))).rc,
      CMPI_RC_ERR_INVALID_PARAMETER);
  EXPECT_EQ(CMGetProperty(disk, "Name", nullptr).state, CMPI_nullValue)
      << "a key is not copied to its property";
  CMPIValue flag{};
  flag.boolean = 1;
  EXPECT_EQ(disk->ft->setPropertyWithOrigin(disk, "Flag", &flag, CMPI_boolean, "Sample_Base").rc, CMPI_RC_OK);
  CMPIString* name = nullptr;
  EXPECT_EQ(CMGetPropertyAt(disk, 1, &name, nullptr).value.boolean, 1);
  EXPECT_EQ(read(name), "Flag");
  CMGetPropertyAt(disk, 100, &name, &m_status);
  EXPECT_EQ(m_status.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
}

TEST_F(BrokerObjects, DateTimesKeepTheirInstant) {
  CMPIDateTime* time = CMNewDateTimeFromChars(m_cmpi, "20260131235959.123456+060", nullptr);
  EXPECT_EQ(read(CMGetStringFormat(time, nullptr)), "20260131235959.123456+060");
  EXPECT_FALSE(CMIsInterval(time, nullptr));
  const CMPIUint64 binary = CMGetBinaryFormat(time, nullptr);
  EXPECT_EQ(
      read(CMGetStringFormat(CMNewDateTimeFromBinary(m_cmpi, binary, 0, nullptr), nullptr)),
      "20260131225959.123456+000");
  CMPIDateTime* interval = CMNewDateTimeFromBinary(m_cmpi, 90000000001ULL, 1, nullptr);
  EXPECT_EQ(read(CMGetStringFormat(interval, nullptr)), "00000001010000.000001:000");
  EXPECT_TRUE(CMIsInterval(interval, nullptr));
  for (const auto& [last, isInterval, text] :
       {std::tuple{DateTime::LAST_TIME, CMPIBoolean{0}, "99991231235959.999999+000"},
        std::tuple{DateTime::LONGEST_INTERVAL, CMPIBoolean{1}, "99999999235959.999999:000"}}) {
    CMPIDateTime* longest = CMNewDateTimeFromBinary(m_cmpi, last, isInterval, nullptr);
    EXPECT_EQ(read(CMGetStringFormat(longest, nullptr)), text);
    EXPECT_EQ(CMNewDateTimeFromBinary(m_cmpi, last + 1, isInterval, &m_status), nullptr);
    EXPECT_EQ(m_status.rc, CMPI_RC_ERR_INVALID_PARAMETER) << "beyond " << text;
  }
  EXPECT_EQ(CMNewDateTimeFromChars(m_cmpi, "yesterday", &m_status), nullptr);
  EXPECT_EQ(m_status.rc, CMPI_RC_ERR_INVALID_PARAMETER);
  const CMPIUint64 before = CMGetBinaryFormat(CMNewDateTime(m_cmpi, nullptr), nullptr);
  EXPECT_LE(before, CMGetBinaryFormat(CMNewDateTime(m_cmpi, nullptr), nullptr));
}

TEST_F(BrokerObjects, ContextsCarryEntries) {
  CMPIContext* context = m_request.context();
  EXPECT_EQ(CMGetContextEntry(context, CMPIInvocationFlags, nullptr).type, CMPI_uint32);
  EXPECT_EQ(
      CMAddContextEntry(context, CMPIRole, reinterpret_cast<const CMPIValue*>("admin"), CMPI_chars).rc,
      CMPI_RC_OK);
  EXPECT_EQ(read(CMGetContextEntry(context, CMPIRole, nullptr).value.string), "admin");
  EXPECT_EQ(context->ft->getEntryCount(context, nullptr), 3U);
  CMPIString* name = nullptr;
  context->ft->getEntryAt(context, 1, &name, nullptr);
  EXPECT_EQ(read(name), CMPIPrincipal);
  CMPIContext* prepared = CBPrepareAttachThread(m_cmpi, context);
  EXPECT_EQ(read(CMGetContextEntry(prepared, CMPIRole, nullptr).value.string), "admin") << "entries go along";
  EXPECT_EQ(CBPrepareAttachThread(m_cmpi, nullptr), nullptr);
  CMGetContextEntry(context, "Other", &m_status);
  EXPECT_EQ(m_status.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
}

TEST_F(BrokerObjects, ErrorsCarryWhatWentWrong) {
  CMPIError* error = m_cmpi->eft->newCMPIError(
      m_cmpi, "TVP", "id", "it broke", CMPIErrorSevUnknown, CMPIErrorProbCauseUnknown, CMPI_RC_ERR_FAILED,
      nullptr);
  const CMPIErrorFT* table = error->ft;
  EXPECT_EQ(read(table->getOwningEntity(error, nullptr)), "TVP");
  EXPECT_EQ(read(table->getMessageID(error, nullptr)), "id");
  EXPECT_EQ(read(table->getMessage(error, nullptr)), "it broke");
  EXPECT_EQ(table->getCIMStatusCode(error, nullptr), CMPI_RC_ERR_FAILED);
  table->setErrorType(error, CMPIOtherErrorType);
  EXPECT_EQ(table->getErrorType(error, nullptr), CMPIOtherErrorType);

  const struct {
    CMPIStatus (*set)(CMPIError*, const char*);
    CMPIString* (*get)(const CMPIError*, CMPIStatus*);
  } texts[] = {
      {table->setOtherErrorType, table->getOtherErrorType},
      {table->setProbableCauseDescription, table->getProbableCauseDescription},
      {table->setErrorSource, table->getErrorSource},
      {table->setOtherErrorSourceFormat, table->getOtherErrorSourceFormat},
      {table->setCIMStatusCodeDescription, table->getCIMStatusCodeDescription}};
  // All are set before the first is read, so that none may take another's place.
  for (std::size_t i = 0; i < std::size(texts); ++i) {
    texts[i].set(error, std::to_string(i).c_str());
  }
  for (std::size_t i = 0; i < std::size(texts); ++i) {
    EXPECT_EQ(read(texts[i].get(error, nullptr)), std::to_string(i));
  }

  CMPIArray* actions = CMNewArray(m_cmpi, 1, CMPI_string, nullptr);
  CMSetArrayElementAt(actions, 0, reinterpret_cast<const CMPIValue*>("look"), CMPI_chars);
  EXPECT_EQ(table->setRecommendedActions(error, actions).rc, CMPI_RC_OK);
  EXPECT_EQ(
      read(CMGetArrayElementAt(table->getRecommendedActions(error, nullptr), 0, nullptr).value.string),
      "look");
  EXPECT_EQ(CMGetArrayCount(table->getMessageArguments(error, nullptr), nullptr), 0U);
  EXPECT_EQ(
      table->setMessageArguments(error, CMNewArray(m_cmpi, 1, CMPI_uint8, nullptr)).rc,
      CMPI_RC_ERR_TYPE_MISMATCH);
  EXPECT_EQ(m_request.result()->ft->returnError(m_request.result(), error).rc, CMPI_RC_OK);
  EXPECT_EQ(m_request.error(), "it broke");
}

TEST_F(BrokerObjects, FiltersArePassedOnUnread) {
  CMPISelectExp* filter = m_cmpi->eft->newSelectExp(m_cmpi, "SELECT * FROM X", "WQL", nullptr, nullptr);
  EXPECT_EQ(read(filter->ft->getString(filter, nullptr)), "SELECT * FROM X");
  filter->ft->evaluate(filter, nullptr, &m_status);
  EXPECT_EQ(m_status.rc, CMPI_RC_ERR_NOT_SUPPORTED);
  EXPECT_EQ(filter->ft->getDOC(filter, &m_status), nullptr);
  EXPECT_EQ(m_status.rc, CMPI_RC_ERR_NOT_SUPPORTED);
  EXPECT_EQ(m_cmpi->eft->newSelectExp(m_cmpi, nullptr, "WQL", nullptr, &m_status), nullptr);
  EXPECT_EQ(m_status.rc, CMPI_RC_ERR_INVALID_PARAMETER);
}

TEST_F(BrokerObjects, UpcallsReachTheHandlerWithWhatTheyCarry) {
  std::vector<Upcall> seen;
  BrokerHandlers handlers;
  handlers.onUpcall = [&seen](const Upcall& upcall) {
    seen.push_back(upcall);
    UpcallAnswer answer;
    answer.rc = upcall.operation == "deleteInstance" ? CMPI_RC_ERR_NOT_FOUND : CMPI_RC_OK;
    answer.values = {Value::uint32(5)};
    answer.output.add("Out", Value::uint8(1));
    return answer;
  };
  m_broker.setHandlers(handlers);
  const CMPIBrokerFT* table = m_cmpi->bft;
  CMPIObjectPath* path = m_request.objectPath(samplePath());
  CMPIArgs* output = CMNewArgs(m_cmpi, nullptr);
  const CMPIData returned = CBInvokeMethod(
      m_cmpi, m_request.context(), path, "Scan",
      m_request.arguments(Arguments().add("Depth", Value::uint32(2))), output, nullptr);
  EXPECT_EQ(returned.value.uint32, 5U);
  EXPECT_EQ(Request::read(output), Arguments().add("Out", Value::uint8(1)));
  EXPECT_EQ(table->deleteInstance(m_cmpi, m_request.context(), path).rc, CMPI_RC_ERR_NOT_FOUND);
  CMPIInstance* disk = m_request.instance(sampleSchema()->emptyInstance(samplePath()));
  const char* none[] = {nullptr};
  EXPECT_EQ(table->modifyInstance(m_cmpi, m_request.context(), path, disk, none).rc, CMPI_RC_OK);
  CMPIValue value{};
  EXPECT_EQ(
      table->setProperty(m_cmpi, m_request.context(), path, "Count", &value, CMPI_uint32).rc, CMPI_RC_OK);
  table->associatorNames(
      m_cmpi, m_request.context(), path, "Sample_Link", nullptr, nullptr, nullptr, nullptr);

  ASSERT_EQ(seen.size(), 5U);
  EXPECT_EQ(seen[0].operation, "invokeMethod");
  EXPECT_EQ(seen[0].name, "Scan");
  EXPECT_EQ(seen[0].input, Arguments().add("Depth", Value::uint32(2)));
  EXPECT_EQ(seen[2].instance, sampleSchema()->emptyInstance(samplePath()));
  EXPECT_EQ(*seen[3].input.find("Count"), Value::uint32(0));
  EXPECT_EQ(seen[4].name, "Sample_Link");
  EXPECT_EQ(seen[4].path, samplePath());

  const CMPIContext* context = m_request.context();
  table->createInstance(m_cmpi, context, path, disk, nullptr);
  table->getProperty(m_cmpi, context, path, "Count", nullptr);
  CMPIEnumeration* found = table->execQuery(m_cmpi, context, path, "SELECT", "WQL", nullptr);
  const CMPIArray* all = found->ft->toArray(found, nullptr);
  EXPECT_EQ(CMGetArrayElementAt(all, 0, nullptr).value.uint32, 5U);
  table->associators(m_cmpi, context, path, "Sample_Link", nullptr, nullptr, nullptr, nullptr, nullptr);
  table->references(m_cmpi, context, path, "Sample_Link", nullptr, nullptr, nullptr);
  table->referenceNames(m_cmpi, context, path, "Sample_Link", nullptr, nullptr);
  std::string operations;
  for (std::size_t i = 5; i < seen.size(); ++i) {
    operations += seen[i].operation + ":" + seen[i].name + " ";
  }
  EXPECT_EQ(
      operations, "createInstance: getProperty:Count execQuery:SELECT associators:Sample_Link "
                  "references:Sample_Link referenceNames:Sample_Link ");

  EXPECT_EQ(table->enumerateInstanceNames(m_cmpi, nullptr, path, &m_status), nullptr);
  EXPECT_EQ(m_status.rc, CMPI_RC_ERR_INVALID_HANDLE);
}

/** Portable providers take threads and locks from the broker. */
TEST(BrokerSystem, ThreadsMutexesAndConditionsWork) {
  Broker broker(sampleSchema());
  const CMPIBrokerExtFT* system = broker.cmpi()->xft;
  struct Shared {
    const CMPIBrokerExtFT* system;
    void* mutex;
    void* condition;
    unsigned long key;
    bool ready;
  } shared{system, system->newMutex(0), system->newCondition(0), 0, false};
  ASSERT_EQ(system->createThreadKey(&shared.key, nullptr), 0);
  void* thread = system->newThread(
      [](void* argument) -> void* {
        auto* given = static_cast<Shared*>(argument);
        given->system->setThreadSpecific(given->key, argument);
        given->system->lockMutex(given->mutex);
        given->ready = true;
        given->system->signalCondition(given->condition);
        given->system->unlockMutex(given->mutex);
        given->system->exitThread(given->system->getThreadSpecific(given->key));
        return nullptr;
      },
      &shared, 0);
  ASSERT_NE(thread, nullptr);
  timespec limit{};
  clock_gettime(CLOCK_REALTIME, &limit);
  limit.tv_sec += 60;
  system->lockMutex(shared.mutex);
  while (!shared.ready) {
    ASSERT_EQ(system->timedCondWait(shared.condition, shared.mutex, &limit), 0);
  }
  system->unlockMutex(shared.mutex);
  void* result = nullptr;
  EXPECT_EQ(system->joinThread(thread, &result), 0);
  EXPECT_EQ(result, &shared) << "the thread's own value, which its exit returns";
  EXPECT_EQ(system->getThreadSpecific(shared.key), nullptr) << "another thread has its own";
  system->destroyThreadKey(shared.key);
  system->destroyCondition(shared.condition);
  system->destroyMutex(shared.mutex);

  static int once = 0;
  static int runs = 0;
  for (int i = 0; i < 2; ++i) {
    system->threadOnce(&once, [] { ++runs; });
  }
  EXPECT_EQ(runs, 1);
  char* file = system->resolveFileName("sample");
  EXPECT_STREQ(file, "libsample.so");
  std::free(file);
}

}  // namespace
}  // namespace tvp::host::testing
