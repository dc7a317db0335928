#pragma once

#include <string>
#include <vector>

#include "tests/gateway/model/world.h"

namespace orvane::test::model {

inline constexpr const char* kNoLogin = "the first message must be a login";

// The right that a topic needs.
Right rightFor(const std::string& topic);
bool isAction(const std::string& topic);

std::vector<std::string> namesOf(int rights);

// The topic as a label of /metrics.
std::string label(const std::string& topic);

// JSON text: a string, and what may be missing.
std::string quoted(const std::string& text);
std::string orNull(const std::string& json);

// A frame of the gateway. `head` is "id" or "seq" with its value.
std::string frame(const std::string& head, const Reply& reply);
std::string answer(const std::string& id, const Reply& reply);

}  // namespace orvane::test::model
