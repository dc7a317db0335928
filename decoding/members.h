#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "decoding/failure.h"
#include "decoding/jsonbody.h"
#include "host/resultstatus.h"
#include "pocketagent/json.h"

namespace orvane {

// A value into its target, if it is of the target's kind.
inline bool read(const JsonValue& value, int32_t& target) {
  const bool fits = value.IsInt();
  if (fits) {
    target = value.GetInt();
  }
  return fits;
}

inline bool read(const JsonValue& value, int64_t& target) {
  const bool fits = value.IsInt64();
  if (fits) {
    target = value.GetInt64();
  }
  return fits;
}

// An integer counts as a number with no decimals, as far as it fits 64 bits.
inline bool read(const JsonValue& value, double& target) {
  const bool fits = value.IsDouble() || value.IsInt64();
  if (fits) {
    target = value.IsDouble() ? value.GetDouble() : static_cast<double>(value.GetInt64());
  }
  return fits;
}

// A text ends at its first NUL.
inline bool read(const JsonValue& value, std::string& target) {
  const bool fits = value.IsString();
  if (fits) {
    target.assign(value.GetString(), strnlen(value.GetString(), value.GetStringLength()));
  }
  return fits;
}

// The first member of this name, or null. A value that is no object ends the process by rapidjson's assertion.
inline const JsonValue* findMember(const JsonValue& object, std::string_view name) {
  const auto member = object.FindMember(JsonValue(name.data(), static_cast<rapidjson::SizeType>(name.size())));
  return member == object.MemberEnd() ? nullptr : &member->value;
}

// Reads the members of one element in the order of the calls; the first fault is told and ends the reading, so that
// checks are joined by &&.
class MemberReader {
 public:
  // A value that is no object ends the process by rapidjson's assertion.
  MemberReader(const JsonValue& element, const FailureTeller& teller)
      : element_(element), next_(element.MemberBegin()), teller_(teller) {}

  // The member must be there and of the target's kind.
  template <typename Target>
  bool require(std::string_view name, Target& target, const FailureTexts& texts,
               const SourcePlace& place = SourcePlace::current()) {
    const JsonValue* value = find(name);
    return (value != nullptr && read(*value, target)) || fail(texts, place);
  }

  // The same where a member that is not there and one of another kind are two faults.
  template <typename Target>
  bool requireApart(std::string_view name, Target& target, const FailureTexts& absent, const FailureTexts& wrongKind,
                    const SourcePlace& place = SourcePlace::current()) {
    const JsonValue* value = find(name);
    return value != nullptr ? read(*value, target) || fail(wrongKind, place) : fail(absent, place);
  }

  // The member may be left out, but must be of the target's kind otherwise.
  template <typename Target>
  bool allow(std::string_view name, Target& target, const FailureTexts& texts,
             const SourcePlace& place = SourcePlace::current()) {
    const JsonValue* value = find(name);
    return value == nullptr || read(*value, target) || fail(texts, place);
  }

  // Reads the member if it is there and of the target's kind; true if so. Never a fault.
  template <typename Target>
  bool readIf(std::string_view name, Target& target) {
    const JsonValue* value = find(name);
    return value != nullptr && read(*value, target);
  }

  // The first member of this name, or null. REQUIRES: no name is asked for twice.
  const JsonValue* find(std::string_view name) {
    // As long as the members stand in the order of the calls, the next one is it: those before it have other names.
    if (next_ != element_.MemberEnd() && next_->name.GetStringLength() == name.size() &&
        std::memcmp(next_->name.GetString(), name.data(), name.size()) == 0) {
      return &(next_++)->value;
    }
    return findMember(element_, name);
  }

  // Tells a fault; false, to end a chain of checks.
  bool fail(const FailureTexts& texts, const SourcePlace& place = SourcePlace::current()) {
    status_ = teller_.fail(texts, place);
    return false;
  }

  // Code 0, or the fault.
  ResultStatus takeStatus() { return std::move(status_); }

 private:
  const JsonValue& element_;
  JsonValue::ConstMemberIterator next_;
  const FailureTeller& teller_;
  ResultStatus status_;
};

// What most decoders say of an account that is not named.
inline constexpr FailureTexts kNoIndex{"has no index member or not int", ",msg=has no index member or not int"};

// Reads the elements of an array into records of their own; the first fault ends the reading.
template <typename Items>
ResultStatus readItems(const JsonValue& array, const FailureTeller& teller,
                       bool (*readItem)(MemberReader&, typename Items::value_type&), Items& items) {
  if constexpr (requires { items.reserve(array.Size()); }) {
    items.reserve(array.Size());
  }
  for (const JsonValue& element : array.GetArray()) {
    MemberReader members(element, teller);
    if (!readItem(members, items.emplace_back())) {
      items.pop_back();
      return members.takeStatus();
    }
  }
  return {};
}

// Decodes a body that is an array of objects. Its frame and its elements tell their faults apart, since some decoders
// log them under different prefixes.
template <typename Items>
ResultStatus decodeItems(const std::string& data, const FailureTeller& frame, const FailureTeller& ofElement,
                         const FailureTexts& notArray, bool (*readItem)(MemberReader&, typename Items::value_type&),
                         Items& items, const SourcePlace& place = SourcePlace::current()) {
  return decodeArray(
      data, frame, notArray, [&](const JsonValue& root) { return readItems(root, ofElement, readItem, items); }, place);
}

}  // namespace orvane
