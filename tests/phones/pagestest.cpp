#include <regex>
#include <sstream>

#include <gmock/gmock.h>

#include "tests/phones/phonesfixture.h"

namespace orvane::test {
namespace {

using namespace std::chrono_literals;
using terminal::CloseCode;
using testing::HasSubstr;

TEST_F(PhonesTest, ReportsAnAgentThatDoesNotAnswer) {
  const auto session = client(token_);
  send(session, R"({"topic":"account.list"})");
  advance(10s);
  EXPECT_EQ(get("/health/ready").status, 200U);
  send(session, R"({"topic":"order.list","data":[1]})");
  advance(1ms);
  EXPECT_EQ(get("/health/ready").status, 503U);
  EXPECT_STREQ(get("/health").contentType, "application/health+json");
  EXPECT_THAT(get("/health").body, HasSubstr(R"("agent:answers":[{"status":"fail","observedValue":10.001,)"));
  reply(0, "1");
  EXPECT_EQ(get("/health/ready").status, 200U);
}

TEST_F(PhonesTest, ShowsMetricsElsewhereOnlyToATokenThatMaySee) {
  const auto status = [this](const std::string& authorization) { return get("/metrics", authorization, false).status; };
  EXPECT_EQ(status(""), 401U);
  EXPECT_EQ(status("Bearer guess"), 401U);
  EXPECT_EQ(status("Bearer " + addToken("trader", "trade")), 401U);
  EXPECT_EQ(status("Bearer " + token_), 200U);
  EXPECT_STREQ(get("/metrics").contentType, "text/plain; version=0.0.4");
  EXPECT_THAT(get("/metrics", "", false).body, HasSubstr("send the header Authorization: Bearer TOKEN.\n"));
}

// A scraper refuses a page with a sample that has no type, or a histogram that does not add up.
TEST_F(PhonesTest, WritesMetricsThatAScraperReads) {
  const std::regex help("# HELP (pocket_terminal_[a-z_]+) [A-Z].*\\.");
  const std::regex type("# TYPE (pocket_terminal_[a-z_]+) (gauge|counter|histogram)");
  const std::regex sample(
      R"re((pocket_terminal_[a-z_]+)(\{(topic|reason|code|version)="[a-z0-9.]+"(,le="([0-9.]+|\+Inf)")?\})? ([0-9.]+))re");
  const auto session = client(token_);
  const std::vector<std::chrono::milliseconds> times{0ms, 1ms, 30ms, 11s};
  for (size_t i = 0; i < times.size(); ++i) {
    send(session, R"({"topic":"account.list"})");
    advance(times[i]);
    reply(i, "1");
  }
  std::string name;
  std::string kind;
  double inBuckets = 0;
  std::istringstream page(get("/metrics").body);
  for (std::string line; std::getline(page, line);) {
    SCOPED_TRACE(line);
    std::smatch parts;
    if (std::regex_match(line, parts, help)) {
      name = parts[1];
    } else if (std::regex_match(line, parts, type)) {
      EXPECT_EQ(parts[1], name);
      kind = parts[2];
      EXPECT_EQ(kind == "counter", name.ends_with("_total"));
    } else {
      ASSERT_TRUE(std::regex_match(line, parts, sample));
      const std::string suffix = parts[1].str().substr(name.size());
      const double value = std::stod(parts[6]);
      EXPECT_EQ(parts[1].str().substr(0, name.size()), name);
      EXPECT_EQ(parts[5].matched, suffix == "_bucket");
      EXPECT_EQ(kind == "histogram", suffix == "_bucket" || suffix == "_sum" || suffix == "_count");
      if (suffix == "_bucket" && parts[5] != "0.001") {
        EXPECT_GE(value, inBuckets);
      }
      if (suffix == "_bucket") inBuckets = value;
      if (suffix == "_count") {
        EXPECT_EQ(value, inBuckets);
      }
    }
  }
  EXPECT_THAT(get("/metrics").body, HasSubstr("request_seconds_count{topic=\"account.list\"} 4\n"));
}

TEST_F(PhonesTest, CountsWrongBearersAsWrongLogins) {
  for (int i = 0; i < 10; ++i) EXPECT_EQ(get("/metrics", "Bearer guess", false).status, 401U) << i;
  EXPECT_EQ(get("/metrics", "Bearer guess", false).status, 429U);
  EXPECT_EQ(get("/metrics", "Bearer " + token_, false).status, 200U);
  const auto session = connect("10.0.0.9");
  send(session, R"({"topic":"login","token":"guess"})");
  EXPECT_EQ(session->closeCode(), CloseCode::TooMany);
}

}  // namespace
}  // namespace orvane::test
