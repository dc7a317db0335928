#include "tests/system/contract.h"

#include <filesystem>
#include <map>
#include <stdexcept>

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <rapidjson/schema.h>
#include <rapidjson/writer.h>

#include "tests/system/terminalprocess.h"

namespace orvane::test {
namespace {

using rapidjson::Document;
using rapidjson::Value;

Document parse(std::string_view text) {
  Document document;
  document.Parse<rapidjson::kParseIterativeFlag>(text.data(), text.size());
  if (document.HasParseError() || !document.IsObject()) throw std::runtime_error("no object: " + std::string(text));
  return document;
}

std::filesystem::path schemaFile(const std::string& name) {
  return std::filesystem::path(CONTRACT_DIR) / "schemas" / (name + ".json");
}

const Document& topics() {
  static const Document document = parse(readFile(schemaFile("topics")));
  return document;
}

bool holds(const Value& frame, const char* member, const char* text) {
  const auto found = frame.FindMember(member);
  return found != frame.MemberEnd() && found->value == text;
}

std::string findFault(const std::string& schema, const Value& value) {
  if (!exists(schemaFile(schema))) return fmt::format("there is no docs/schemas/{}.json", schema);
  thread_local std::map<std::string, rapidjson::SchemaDocument> schemas;
  const auto compiled = schemas.try_emplace(schema, parse(readFile(schemaFile(schema)))).first;
  rapidjson::SchemaValidator validator(compiled->second);
  if (value.Accept(validator)) return {};
  const rapidjson::Pointer place = validator.GetInvalidDocumentPointer();
  rapidjson::StringBuffer path, found;
  rapidjson::Writer<rapidjson::StringBuffer> writer(found);
  place.StringifyUriFragment(path);
  place.Get(value)->Accept(writer);
  return fmt::format("docs/schemas/{}.json: \"{}\" is broken at {}: {:.400}", schema,
                     validator.GetInvalidSchemaKeyword(), path.GetString(), found.GetString());
}

// Replies of several topics may carry the name `topic`.
std::string findReplyFault(const std::string& topic, const Value& data) {
  std::string faults;
  for (const auto& row : topics()["topics"].GetObject()) {
    if (row.value["replyTopic"] != topic.c_str()) continue;
    const std::string fault = findFault(row.name.GetString() + std::string(".reply"), data);
    if (fault.empty()) return {};
    faults += fault + '\n';
  }
  return faults.empty() ? fmt::format("no topic is described whose reply is \"{}\"", topic) : faults;
}

}  // namespace

std::string findAnswerFault(std::string_view text) {
  const Document frame = parse(text);
  const bool isPush = !frame.HasMember("id");
  const bool isReply = !isPush && holds(frame, "message", "") && !frame.HasMember("text");
  const char* push = frame.HasMember("seq") ? "push" : "unnumbered";
  const char* schema = isPush ? push : isReply ? "reply" : frame.HasMember("text") ? "text" : "failure";
  std::string fault = findFault(fmt::format("frame.{}", schema), frame);
  if (!fault.empty()) return fault;
  if (isPush) return findFault(frame["topic"].GetString() + std::string(".push"), frame["data"]);
  return isReply ? findReplyFault(frame["topic"].GetString(), frame["data"]) : "";
}

std::string findRequestFault(std::string_view text) {
  const Document frame = parse(text);
  if (holds(frame, "topic", "login")) return findFault("frame.login", frame);
  const std::string fault = findFault("frame.request", frame);
  if (!fault.empty() || !frame.HasMember("data")) return fault;
  return findFault(frame["topic"].GetString() + std::string(".request"), frame["data"]);
}

std::map<std::string, std::string> describedRights() {
  std::map<std::string, std::string> rights;
  for (const auto& row : topics()["topics"].GetObject()) rights[row.name.GetString()] = row.value["right"].GetString();
  return rights;
}

void CheckedClient::onMessage(std::string_view text) {
  const std::string fault = findAnswerFault(text);
  EXPECT_EQ(fault, "") << "in " << text.substr(0, 400);
}

}  // namespace orvane::test
