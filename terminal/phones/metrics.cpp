#include "terminal/phones/metrics.h"

#include <algorithm>
#include <iterator>

#include <fmt/format.h>

namespace orvane::terminal {
namespace {

constexpr std::array<std::string_view, static_cast<size_t>(RefusalReason::kCount)> kReasons{
    "login", "frame", "body", "rights", "key", "crowd", "agent", "fault"};

template <typename... Values>
void add(std::string& text, fmt::format_string<Values...> line, Values&&... values) {
  fmt::format_to(std::back_inserter(text), line, std::forward<Values>(values)...);
}

void addHead(std::string& text, std::string_view name, std::string_view kind, std::string_view help) {
  add(text, "# HELP pocket_terminal_{0} {1}\n# TYPE pocket_terminal_{0} {2}\n", name, help, kind);
}

void addValue(std::string& text, std::string_view name, std::string_view kind, std::string_view help, uint64_t value) {
  addHead(text, name, kind, help);
  add(text, "pocket_terminal_{} {}\n", name, value);
}

void addRefusals(std::string& text, std::string_view reason, uint64_t count) {
  add(text, "pocket_terminal_refusals_total{{reason=\"{}\"}} {}\n", reason, count);
}

}  // namespace

Metrics::Metrics() : topics_(topics().size()) {
  for (const int code : {1001, 1003, 1011, 4401, 4403, 4408, 4409, 4429}) closes_[code] = 0;
}

void Metrics::countAnswer(const Topic& topic, bool failed, std::chrono::duration<double> latency) {
  Counts& counted = topics_[topicIndex(topic)];
  counted.failures += failed ? 1 : 0;
  counted.seconds += latency.count();
  ++counted.buckets[static_cast<size_t>(std::lower_bound(kBounds.begin(), kBounds.end(), latency.count()) -
                                        kBounds.begin())];
}

std::string Metrics::write(const Gauges& now) const {
  std::string text;
  text.reserve(size_t{64} * 1024);
  addHead(text, "build_info", "gauge", "The running version.");
  add(text, "pocket_terminal_build_info{{version=\"{}\"}} 1\n", POCKET_TERMINAL_VERSION);
  writeTopics(text);
  writeLatency(text);
  addValue(text, "requests_waiting", "gauge", "Requests without a reply.", now.waiting);
  addValue(text, "connections", "gauge", "Open connections.", now.transport.connections);
  addValue(text, "phones", "gauge", "Connections that are logged in.", now.loggedIn);
  addValue(text, "pushes_total", "counter", "Pushes, each counted once for all phones.", pushes_);
  addHead(text, "refusals_total", "counter", "What was not done, by reason.");
  addRefusals(text, "connection", now.transport.refusedConnections);
  addRefusals(text, "origin", now.transport.refusedOrigins);
  for (size_t i = 0; i < kReasons.size(); ++i) addRefusals(text, kReasons[i], refusals_[i]);
  addHead(text, "closes_total", "counter", "Connections that the gateway closed, by close code; 4408 is a slow phone.");
  for (const auto& [code, count] : closes_) add(text, "pocket_terminal_closes_total{{code=\"{}\"}} {}\n", code, count);
  return text;
}

void Metrics::writeTopics(std::string& text) const {
  addHead(text, "requests_total", "counter", "Requests handed to the library.");
  for (size_t i = 0; i < topics_.size(); ++i) {
    add(text, "pocket_terminal_requests_total{{topic=\"{}\"}} {}\n", topics()[i].name, topics_[i].requests);
  }
  addHead(text, "failures_total", "counter", "Requests answered by a failure.");
  for (size_t i = 0; i < topics_.size(); ++i) {
    add(text, "pocket_terminal_failures_total{{topic=\"{}\"}} {}\n", topics()[i].name, topics_[i].failures);
  }
}

void Metrics::writeLatency(std::string& text) const {
  constexpr std::string_view kName = "pocket_terminal_request_seconds";
  addHead(text, "request_seconds", "histogram", "From a request's arrival to its reply.");
  for (size_t i = 0; i < topics_.size(); ++i) {
    uint64_t count = 0;
    for (size_t bucket = 0; bucket < kBounds.size(); ++bucket) {
      count += topics_[i].buckets[bucket];
      add(text, "{}_bucket{{topic=\"{}\",le=\"{}\"}} {}\n", kName, topics()[i].name, kBounds[bucket], count);
    }
    count += topics_[i].buckets.back();
    add(text, "{}_bucket{{topic=\"{}\",le=\"+Inf\"}} {}\n", kName, topics()[i].name, count);
    add(text, "{}_sum{{topic=\"{}\"}} {}\n", kName, topics()[i].name, topics_[i].seconds);
    add(text, "{}_count{{topic=\"{}\"}} {}\n", kName, topics()[i].name, count);
  }
}

}  // namespace orvane::terminal
