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

// Each copies a value to its target and returns true if it is of the target's kind.

inline bool read(const JsonValue& value, int32_t& target) {
  const bool fits = value.IsInt();
  if (fits) target = value.GetInt();
  return fits;
}

inline bool read(const JsonValue& value, int64_t& target) {
  const bool fits = value.IsInt64();
  if (fits) target = value.GetInt64();
  return fits;
}

// An integer is accepted too, if it fits 64 bits.
inline bool read(const JsonValue& value, double& target) {
  const bool fits = value.IsDouble() || value.IsInt64();
  if (fits) target = value.IsDouble() ? value.GetDouble() : static_cast<double>(value.GetInt64());
  return fits;
}

// A text ends at its first NUL.
inline bool read(const JsonValue& value, std::string& target) {
  const bool fits = value.IsString();
  if (fits) target.assign(value.GetString(), strnlen(value.GetString(), value.GetStringLength()));
  return fits;
}

// The first member of this name, or null. A value that is not an object ends the process by rapidjson's assertion.
inline const JsonValue* findMember(const JsonValue& object, std::string_view name) {
  const auto member = object.FindMember(JsonValue(name.data(), static_cast<rapidjson::SizeType>(name.size())));
  return member == object.MemberEnd() ? nullptr : &member->value;
}

// Reads the members of one element in the order of the calls. Each check returns false after an error, so checks are
// joined by && and the first error ends the reading.
class MemberReader {
 public:
  MemberReader(const JsonValue& element, const FailureReporter& reporter)
      : element_(element), next_(element.MemberBegin()), reporter_(reporter) {}

  // The member must be present and of the target's kind.
  template <typename Target>
  bool require(std::string_view name, Target& target, const FailureTexts& texts) {
    return require(name, target, texts, texts);
  }

  // The same, with an error of its own for each of the two.
  template <typename Target>
  bool require(std::string_view name, Target& target, const FailureTexts& absent, const FailureTexts& wrongKind) {
    const JsonValue* value = find(name);
    return value != nullptr ? read(*value, target) || fail(wrongKind) : fail(absent);
  }

  // The member may be absent, but must otherwise be of the target's kind.
  template <typename Target>
  bool allow(std::string_view name, Target& target, const FailureTexts& texts) {
    const JsonValue* value = find(name);
    return value == nullptr || read(*value, target) || fail(texts);
  }

  // True if the member is present and of the target's kind. Never an error.
  template <typename Target>
  bool readIf(std::string_view name, Target& target) {
    const JsonValue* value = find(name);
    return value != nullptr && read(*value, target);
  }

  // The first member of this name, or null. REQUIRES: no name is asked for twice.
  const JsonValue* find(std::string_view name) {
    // Clients send members in the order of the checks, so the next one is usually it. It is then the first of its name,
    // because those before it were other names. Saves a fifth of the time of a large body.
    if (next_ != element_.MemberEnd() && next_->name.GetStringLength() == name.size() &&
        std::memcmp(next_->name.GetString(), name.data(), name.size()) == 0) {
      return &(next_++)->value;
    }
    return findMember(element_, name);
  }

  // Reports an error; always false.
  bool fail(const FailureTexts& texts) {
    status_ = reporter_.fail(texts);
    return false;
  }

  // Code 0, or the error.
  ResultStatus takeStatus() { return std::move(status_); }

 private:
  const JsonValue& element_;
  JsonValue::ConstMemberIterator next_;
  const FailureReporter& reporter_;
  ResultStatus status_;
};

// The error of most decoders for an element without an account.
inline constexpr FailureTexts kNoIndex{"has no index member or not int", ",msg=has no index member or not int"};

// Reads each element of an array into a record of its own. The first error ends the reading.
template <typename Items>
ResultStatus readItems(const JsonValue& array, const FailureReporter& reporter,
                       bool (*readItem)(MemberReader&, typename Items::value_type&), Items& items) {
  for (const JsonValue& element : array.GetArray()) {
    MemberReader members(element, reporter);
    if (!readItem(members, items.emplace_back())) {
      items.pop_back();
      return members.takeStatus();
    }
  }
  return {};
}

// Decodes a body that is an array of objects. Some decoders log errors of the body and errors of its elements under
// different prefixes, so each has its reporter.
template <typename Items>
ResultStatus decodeItems(const std::string& data, const FailureReporter& ofBody, const FailureReporter& ofElement,
                         const FailureTexts& notArray, bool (*readItem)(MemberReader&, typename Items::value_type&),
                         Items& items) {
  return decodeArray(data, ofBody, notArray,
                     [&](const JsonValue& root) { return readItems(root, ofElement, readItem, items); });
}

}  // namespace orvane
