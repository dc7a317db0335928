#include "terminal/gateway/frame.h"

#include <array>
#include <charconv>
#include <system_error>

#include <fmt/format.h>

#include "terminal/jsonmembers.h"

namespace orvane::terminal {
namespace {

enum Name { Id, Topic, Data, Token, TerminalType };
constexpr std::array<std::string_view, 5> kNames{"id", "topic", "data", "token", "terminalType"};

bool isId(const JsonMember& member) { return member.kind == JsonKind::String || member.kind == JsonKind::Number; }

bool isTextOrMissing(const JsonMember& member) {
  return member.kind == JsonKind::String || member.kind == JsonKind::Missing;
}

bool readInt32(const JsonMember& member, int32_t& value) {
  if (member.kind == JsonKind::Missing) return true;
  const char* end = member.raw.data() + member.raw.size();
  const auto [stop, error] = std::from_chars(member.raw.data(), end, value);
  return error == std::errc() && stop == end;
}

std::string wrongKind(Name name, std::string_view wanted, const JsonMember& member) {
  return fmt::format("the frame's \"{}\" must be {}, not {}", kNames.at(name), wanted, kindName(member.kind));
}

// The first fault of a frame that is JSON; empty where there is none.
std::string findFault(const JsonMembers& members, int32_t& terminalType) {
  const JsonMember& id = members[Id];
  const JsonMember& topic = members[Topic];
  const JsonMember& token = members[Token];
  if (members.root() != JsonKind::Object) {
    return fmt::format("a frame must be an object, not {}", kindName(members.root()));
  }
  if (id.kind != JsonKind::Missing && !isId(id)) return wrongKind(Id, "a string or a number", id);
  if (topic.kind != JsonKind::String) return wrongKind(Topic, "a string", topic);
  if (!isTextOrMissing(token)) return wrongKind(Token, "a string", token);
  if (!readInt32(members[TerminalType], terminalType)) {
    return fmt::format("the frame's \"terminalType\" must be a whole number of 32 bits, not {}",
                       members[TerminalType].raw);
  }
  return {};
}

// `data` is JSON text, or empty for null.
std::string writeFrame(std::string_view id, const MobileMessage& message, std::string_view data,
                       std::string_view text) {
  std::string frame;
  frame.reserve(id.size() + message.topic.size() + message.message.size() + data.size() + text.size() + 64);
  frame += '{';
  if (!id.empty()) frame.append("\"id\":").append(id).append(",");
  frame.append("\"topic\":").append(jsonString(message.topic));
  frame.append(",\"message\":").append(jsonString(message.message));
  frame.append(",\"data\":").append(data.empty() ? "null" : data);
  if (!text.empty()) frame.append(",\"text\":").append(jsonString(text));
  return frame += '}';
}

std::string writeReply(std::string_view id, const MobileMessage& message) {
  if (message.data.empty() || checkJson(message.data).ok) return writeFrame(id, message, message.data, {});
  return writeFrame(id, message, {}, message.data);
}

}  // namespace

std::variant<Frame, FrameError> readFrame(std::string_view text) {
  JsonMembers members(text, kNames);
  const JsonResult result = members.read();
  Frame frame;
  if (isId(members[Id])) frame.id = members[Id].raw;
  frame.topic = members[Topic].text;
  if (!result.ok) return FrameError{frame.id, frame.topic, "the frame cannot be read: " + result.message};
  if (std::string fault = findFault(members, frame.terminalType); !fault.empty()) {
    return FrameError{frame.id, frame.topic, std::move(fault)};
  }
  frame.body = members[Data].raw;
  frame.token = members[Token].text;
  return frame;
}

std::string writeAnswer(std::string_view id, const MobileMessage& message) { return writeReply(id, message); }

std::string writePush(const MobileMessage& message) { return writeReply({}, message); }

std::string writeFailure(std::string_view id, std::string_view topic, std::string_view message) {
  MobileMessage failure;
  failure.topic = topic;
  failure.message = message;
  return writeFrame(id, failure, {}, {});
}

}  // namespace orvane::terminal
