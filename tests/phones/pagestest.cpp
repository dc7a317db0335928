#include <regex>

#include "tests/phones/phonesfixture.h"

namespace orvane::test {
namespace {

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
  const std::regex headOrSample(
      "# HELP (pocket_terminal_[a-z_]+) [A-Z].*\\.\n# TYPE \\1 (gauge|counter|histogram)\n|"
      "(pocket_terminal_[a-z_]+?)(_bucket|_sum|_count)?"
      R"re((\{(topic|reason|code|version)="[a-z0-9.]+"(,le="([0-9.]+|\+Inf)")?\})? ([0-9.]+))re"
      "\n");
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
  std::smatch part;
  for (std::string page = get("/metrics").body; !page.empty(); page = part.suffix()) {
    ASSERT_TRUE(std::regex_search(page, part, headOrSample, std::regex_constants::match_continuous))
        << page.substr(0, 100);
    SCOPED_TRACE(part.str());
    if (part[1].matched) {
      name = part[1];
      kind = part[2];
      EXPECT_EQ(kind == "counter", name.ends_with("_total"));
      continue;
    }
    const std::string suffix = part[4];
    const double value = std::stod(part[9]);
    EXPECT_EQ(part[3], name);
    EXPECT_EQ(kind == "histogram", !suffix.empty());
    EXPECT_EQ(part[7].matched, suffix == "_bucket");
    if (suffix == "_bucket") {
      EXPECT_GE(value, inBuckets);
      inBuckets = value;
    } else if (suffix == "_count") {
      EXPECT_EQ(value, std::exchange(inBuckets, 0));
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
