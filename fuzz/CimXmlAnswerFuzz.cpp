// SPDX-License-Identifier: Apache-2.0
// The reader of answers, which come from servers of others: any bytes are an answer, or refused.
#include "fuzz/CimXmlSample.h"
#include "fuzz/FuzzTarget.h"
#include "host/cimxml/message/AnswerMessage.h"
#include "host/cimxml/message/Failure.h"
#include "host/cimxml/message/MessageWriter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tvp::host::cimxml;
  using tvp::fuzz::require;
  const auto schema = tvp::fuzz::sampleSchema();
  const auto* method = schema->find("T_Pool")->method("Grow");
  const auto read = [&](std::string_view xml) { return AnswerMessage::read(xml, *schema, method); };
  AnswerMessage answer;
  try {
    answer = read(std::string_view(reinterpret_cast<const char*>(data), size));
  } catch (const BadMessage&) {
    return 0;
  }
  const AnswerHead head = {"1", "X"};
  const std::string instances =
      instancesAnswer(head, answer.instances, ObjectShape::NamedInstance, {}, *schema);
  require(read(instances).instances.size() == answer.instances.size(), "has as many instances: " + instances);
  const std::string paths = pathsAnswer(head, answer.paths, PathShape::InstanceName);
  require(read(paths).paths.size() == answer.paths.size(), "has as many paths: " + paths);
  const std::string output = methodAnswer(head, answer.returnValue, answer.output);
  require(read(output).output.values.size() == answer.output.values.size(), "has the output: " + output);
  return 0;
}
