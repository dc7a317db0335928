#include <fmt/format.h>
#include <gmock/gmock.h>

#include "terminal/logfile.h"
#include "tests/support/holdssoon.h"
#include "tests/support/rawsocket.h"
#include "tests/system/terminalprocess.h"

namespace orvane::test {
namespace {

using terminal::LogFile;
using testing::HasSubstr;
using testing::StartsWith;

TEST(LogFile, IsRotated) {
  const TempDir dir;
  const std::filesystem::path path = dir.path() / "x.log";
  for (int start = 0; start < 2; ++start) {
    LogFile file(path, 8, 2);
    for (int i = 0; i < 5; ++i) file.write(fmt::format("{}-{}\n", start, i));
  }
  EXPECT_EQ(readFile(path), "1-3\n1-4\n");
  EXPECT_EQ(readFile(dir.path() / "x.log.1"), "1-1\n1-2\n");
  EXPECT_EQ(readFile(dir.path() / "x.log.2"), "0-4\n1-0\n");
  EXPECT_FALSE(std::filesystem::exists(dir.path() / "x.log.3"));
}

// A file that cannot be renamed, because a folder is in the way, goes on growing.
TEST(LogFile, GrowsRatherThanLosesLines) {
  const TempDir dir;
  std::filesystem::create_directories(dir.path() / "x.log.1" / "full");
  {
    LogFile file(dir.path() / "x.log", 8, 1);
    for (int i = 0; i < 5; ++i) file.write("abc\n");
  }
  EXPECT_EQ(readFile(dir.path() / "x.log"), "abc\nabc\nabc\nabc\nabc\n");
}

TEST(LogFile, CountsWhatIsLost) {
  const TempDir dir;
  const std::filesystem::path path = dir.path() / "later" / "x.log";
  testing::internal::CaptureStderr();
  LogFile file(path, 100, 1);
  file.write("one\n");
  file.write("two\n");
  EXPECT_EQ(
      testing::internal::GetCapturedStderr(),
      fmt::format("pocket-terminal: the log file {} cannot be written: No such file or directory; its lines are lost "
                  "until it can\n",
                  path.string()));
  const std::string fault = fmt::format(
      "2 lines of {} are lost: No such file or directory; make room, or choose another file with --log", path.string());
  EXPECT_TRUE(holdsSoon([&] { return file.fault() == fault; })) << file.fault();
  std::filesystem::create_directory(path.parent_path());
  file.write("three\n");
  EXPECT_TRUE(holdsSoon([&] { return file.fault().empty(); })) << file.fault();
  EXPECT_EQ(readFile(path), "2 lines are lost here: No such file or directory\nthree\n");
}

// The library's lines are in it, too: at this level each request has some.
TEST(Log, OnAFullDisk) {
  FreshTerminal terminal({"--log", "/dev/full", "--log-level", "trace"});
  const auto phone = terminal.login();
  for (int i = 0; i < 100; ++i) EXPECT_EQ(phone->request("account.list").message, "");
  EXPECT_TRUE(holdsSoon([&] { return httpGet(terminal.port(), "/health").find("are lost") != std::string::npos; }));
  const std::string health = httpGet(terminal.port(), "/health");
  EXPECT_THAT(health, StartsWith("HTTP/1.1 200 "));
  EXPECT_THAT(health, HasSubstr(R"("log:writes":[{"status":"warn","output":")"));
  EXPECT_THAT(health, HasSubstr("lines of /dev/full are lost: No space left on device; make room, or choose"));
  EXPECT_EQ(terminal.stop(), 0);
}

}  // namespace
}  // namespace orvane::test
