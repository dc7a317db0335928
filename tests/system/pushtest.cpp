#include <fmt/format.h>
#include <gmock/gmock.h>

#include "terminal/phones/frame.h"
#include "terminal/phones/pushlog.h"

namespace orvane::test {
namespace {

using terminal::PushLog;
using testing::StartsWith;

TEST(PushLog, KeepsTheLast) {
  PushLog log;
  MobileMessage push;
  push.topic = "p";
  EXPECT_TRUE(log.canResume(log.epoch(), 0));
  for (int i = 0; i < 1030; ++i) log.add(push);
  EXPECT_FALSE(log.canResume(log.epoch(), 5));
  EXPECT_TRUE(log.canResume(log.epoch(), 6));
  EXPECT_FALSE(log.canResume(PushLog().epoch(), 1030));
  std::string missed;
  log.resume(1028, [&](const PushLog::Text& text) { missed += *text; });
  EXPECT_EQ(missed,
            R"({"seq":1029,"topic":"p","message":"","data":null}{"seq":1030,"topic":"p","message":"","data":null})");

  push.message.assign(700'000, 'x');
  for (int i = 0; i < 3; ++i) log.add(push);
  EXPECT_FALSE(log.canResume(log.epoch(), 1030));
  EXPECT_TRUE(log.canResume(log.epoch(), 1031));
}

TEST(PushLog, IsResumedAtAPositionThatWasGiven) {
  for (const char* resume :
       {R"({"epoch":"a","seq":-1})", R"({"epoch":"a","seq":1.5})", "[]", R"({"seq":1})", R"({"epoch":"a"})"}) {
    const auto frame = terminal::readFrame(fmt::format(R"({{"topic":"login","resume":{}}})", resume));
    ASSERT_TRUE(std::holds_alternative<terminal::FrameError>(frame)) << resume;
    EXPECT_THAT(std::get<terminal::FrameError>(frame).message,
                StartsWith(R"(the frame's "resume" must be an object such as)"));
  }
}

}  // namespace
}  // namespace orvane::test
