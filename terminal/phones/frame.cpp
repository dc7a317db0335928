#include "terminal/phones/frame.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <system_error>

#include <fmt/format.h>

#include "terminal/jsonmembers.h"
#include "terminal/plainname.h"

namespace orvane::terminal {
namespace {

struct At {
  enum Name { Id, Topic, Data, Token, TerminalType, Key, Device, Resume };
};
constexpr std::array<std::string_view, 8> kNames{"id",           "topic", "data",   "token",
                                                 "terminalType", "key",   "device", "resume"};
constexpr size_t kMaxDevice = 64;
constexpr size_t kMaxTopic = 64;
constexpr const char* kExpected = R"(expected one such as {"id": 7, "topic": "capital.list", "data": [0, 3]})";

// Topics go to the audit and the log, so they are short and can be read there.
bool isTopic(std::string_view text) {
  return !text.empty() && text.size() <= kMaxTopic &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

bool isId(const JsonMember& member) { return member.kind == JsonKind::String || member.kind == JsonKind::Number; }

bool isTextOrMissing(const JsonMember& member) {
  return member.kind == JsonKind::String || member.kind == JsonKind::Missing;
}

template <typename Number>
bool readNumber(const JsonMember& member, Number& value) {
  const char* end = member.raw.data() + member.raw.size();
  const auto [stop, error] = std::from_chars(member.raw.data(), end, value);
  return error == std::errc() && stop == end;
}

bool readInt32(const JsonMember& member, int32_t& value) {
  return member.kind == JsonKind::Missing || readNumber(member, value);
}

bool readResume(const JsonMember& member, std::optional<PushPosition>& resume) {
  if (member.kind == JsonKind::Missing) return true;
  constexpr std::array<std::string_view, 2> kParts{"epoch", "seq"};
  JsonMembers parts(member.raw, kParts);
  if (!parts.read().ok || parts.root() != JsonKind::Object || parts[0].kind != JsonKind::String) return false;
  resume.emplace().epoch = parts[0].text;
  return readNumber(parts[1], resume->seq);
}

std::string wrongKind(At::Name name, std::string_view wanted, const JsonMember& member) {
  return fmt::format("the frame's \"{}\" must be {}, not {}", kNames.at(name), wanted, kindName(member.kind));
}

// The first error of a frame that is JSON; empty if there is none.
std::string findFault(const JsonMembers& members, Frame& frame) {
  const JsonMember& id = members[At::Id];
  const JsonMember& topic = members[At::Topic];
  if (members.root() != JsonKind::Object) {
    return fmt::format("a frame must be an object, not {}; {}", kindName(members.root()), kExpected);
  }
  if (id.kind != JsonKind::Missing && !isId(id)) return wrongKind(At::Id, "a string or a number", id);
  if (topic.kind != JsonKind::String) return wrongKind(At::Topic, "a string", topic);
  if (!isTopic(topic.text)) return "the frame's \"topic\" must be 1 to 64 printable ASCII characters";
  for (const At::Name name : {At::Token, At::Device}) {
    if (!isTextOrMissing(members[name])) return wrongKind(name, "a string", members[name]);
  }
  if (!readInt32(members[At::TerminalType], frame.terminalType)) {
    return fmt::format("the frame's \"terminalType\" must be a whole number of 32 bits, not {}",
                       members[At::TerminalType].raw);
  }
  if (members[At::Key].kind != JsonKind::Missing && !isPlainName(members[At::Key].text)) {
    return fmt::format("the frame's \"key\" must be a string of {}", kPlainNameRule);
  }
  if (members[At::Device].text.size() > kMaxDevice) {
    return fmt::format("the frame's \"device\" has more than {} bytes", kMaxDevice);
  }
  if (!readResume(members[At::Resume], frame.resume)) {
    return R"(the frame's "resume" must be an object such as {"epoch": "5f0c", "seq": 17})";
  }
  return {};
}

// `first` is the name of the first member, and `value` its JSON text; `data` is JSON text, or empty for null.
std::string writeFrame(std::string_view first, std::string_view value, const MobileMessage& message,
                       std::string_view data, std::string_view text) {
  std::string frame;
  frame.reserve(value.size() + message.topic.size() + message.message.size() + data.size() + text.size() + 64);
  frame.append("{\"").append(first).append("\":").append(value);
  frame.append(",\"topic\":").append(jsonString(message.topic));
  frame.append(",\"message\":").append(jsonString(message.message));
  frame.append(",\"data\":").append(data.empty() ? "null" : data);
  if (!text.empty()) frame.append(",\"text\":").append(jsonString(text));
  return frame += '}';
}

std::string writeMessage(std::string_view first, std::string_view value, const MobileMessage& message) {
  if (message.data.empty() || checkJson(message.data).ok) return writeFrame(first, value, message, message.data, {});
  return writeFrame(first, value, message, {}, message.data);
}

}  // namespace

std::variant<Frame, FrameError> readFrame(std::string_view text) {
  JsonMembers members(text, kNames);
  const JsonResult result = members.read();
  Frame frame;
  if (isId(members[At::Id])) frame.id = members[At::Id].raw;
  frame.topic = members[At::Topic].text;
  if (!isTopic(frame.topic)) frame.topic.clear();
  if (!result.ok) {
    return FrameError{frame.id, frame.topic,
                      fmt::format("the frame cannot be read: {}; {}", result.message, kExpected)};
  }
  if (std::string fault = findFault(members, frame); !fault.empty()) {
    return FrameError{frame.id, frame.topic, std::move(fault)};
  }
  frame.body = members[At::Data].raw;
  frame.token = members[At::Token].text;
  frame.device = members[At::Device].text;
  frame.key = members[At::Key].text;
  return frame;
}

std::string writeAnswer(std::string_view id, const MobileMessage& message) { return writeMessage("id", id, message); }

std::string writePush(uint64_t seq, const MobileMessage& message) {
  return writeMessage("seq", std::to_string(seq), message);
}

std::string writeFailure(std::string_view id, std::string_view topic, std::string_view message) {
  MobileMessage failure;
  failure.topic = topic;
  failure.message = message;
  return writeFrame("id", id, failure, {}, {});
}

std::string writeWelcome(std::string_view id, const Visitor& visitor, const PushPosition& now, bool resumed) {
  MobileMessage welcome;
  welcome.topic = "login";
  const std::string data =
      fmt::format(R"({{"name":{},"rights":["{}"],"epoch":"{}","seq":{},"resumed":{}}})", jsonString(visitor.name),
                  fmt::join(visitor.rights.names(), R"(",")"), now.epoch, now.seq, resumed);
  return writeFrame("id", id, welcome, data, {});
}

}  // namespace orvane::terminal
