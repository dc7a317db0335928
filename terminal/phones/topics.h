#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "terminal/rights.h"

namespace orvane::terminal {

// Which array of a request's body is a list: the body itself, or the member `orderList` of an object.
enum class BodyShape : uint8_t { List, OrderList };

// What answers a request.
enum class Answerer : uint8_t { Agent, QuoteWatch, Alerts };

// What the terminal knows of a topic. A new topic is a new row in topics.cpp.
struct Topic {
  std::string_view name;
  Right right = Right::See;
  BodyShape shape = BodyShape::List;
  bool hasObjects = false;              // the library asserts that the list's elements are objects
  bool hasNotices = false;              // the host refuses such a request by a notice
  Answerer answerer = Answerer::Agent;  // neither library nor host sees what another answers

  // Such a request may carry a key and leaves a line in the audit.
  bool changesSomething() const { return right != Right::See; }
};

// All rows. The last, "other", is that of every topic without a row. Such a request needs the right see and goes
// to the host's user interface proxy.
std::span<const Topic> topics();

// The row of a frame's topic, which ends at its first NUL as it does for the library. Valid for ever.
const Topic& findTopic(const std::string& name);

// The row's place in topics().
size_t topicIndex(const Topic& topic);

// Why `rights` do not suffice for a request of this topic; empty if they do.
std::string findRightsFault(Rights rights, const Topic& topic);

}  // namespace orvane::terminal
