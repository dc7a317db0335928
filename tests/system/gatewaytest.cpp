#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tests/support/holdssoon.h"
#include "tests/system/terminalprocess.h"

namespace orvane::test {
namespace {

using terminal::Client;
using terminal::Reply;
using testing::HasSubstr;
using testing::StartsWith;

class GatewayTest : public testing::Test {
 protected:
  TempDir dir_;
  TerminalProcess terminal_{dir_.path() / "data"};
};

TEST_F(GatewayTest, EndsItsSessionsAndKeepsItsDatabasePrivate) {
  const auto phone = terminal_.login();
  const TerminalProcess impatient(dir_.path() / "other", {"--login-timeout", "0.1"});
  EXPECT_EQ(Client(impatient.port()).waitClose(), 4401) << "there was no login";
  struct stat database {};
  ASSERT_EQ(stat((dir_.path() / "data" / "gateway.db").c_str(), &database), 0);
  EXPECT_EQ(database.st_mode & 0777, 0600U);
  EXPECT_EQ(terminal_.stop(), 0);
  EXPECT_EQ(phone->waitClose(), 1001);
  EXPECT_THAT(readFile(dir_.path() / "data" / "terminal.log"),
              HasSubstr("[INFO] Gateway phone 1 is logged in as first from 127.0.0.1\n"));
}

// The answers repeat the long ids until neither the connection nor the send queue can hold more of them.
TEST(SlowPhone, IsDropped) {
  const TempDir dir;
  TerminalProcess terminal(dir.path());
  const auto phone = terminal.login();
  const std::string frame = "{\"id\":\"" + std::string(200'000, 'x') + "\",\"topic\":\"order.condition.list\"}";
  ASSERT_TRUE(holdsSoon([&] {
    phone->send(frame);
    return readFile(dir.path() / "terminal.log").find("phone 1 reads too slowly") != std::string::npos;
  }));
  EXPECT_EQ(phone->waitClose(), 4408);
  EXPECT_EQ(terminal.login()->request("account.list").message, "");
}

}  // namespace
}  // namespace orvane::test
