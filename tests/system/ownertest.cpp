// Commands of root, and a terminal that root starts, on the folder of another user's service.

#include <cstdlib>

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/system/terminalprocess.h"

namespace orvane::test {
namespace {

using testing::HasSubstr;

class FolderOfAService : public testing::Test {
 protected:
  static constexpr uid_t kService = 65534;

  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root acts as others";
    setenv("ASAN_OPTIONS", (options_ + ":detect_leaks=0").c_str(), 1);  // it cannot trace one that has given up root
    ASSERT_EQ(chown(dir_.path().c_str(), kService, kService), 0);
  }
  void TearDown() override { setenv("ASAN_OPTIONS", options_.c_str(), 1); }

  void addToken(const std::string& name) const {
    runTerminal({"token", "add", name, "--rights", "see", "--data", dir_.path().string()});
  }
  // A file or a folder that the service's user could have put there.
  void plantLink(const std::string& name) const {
    std::filesystem::remove(dir_.path() / name);
    std::filesystem::create_symlink(secret_.path() / name, dir_.path() / name);
  }
  void expectOwned(const std::string& name) const {
    struct stat file {};
    ASSERT_EQ(stat((dir_.path() / name).c_str(), &file), 0) << name;
    EXPECT_EQ(file.st_uid, kService) << name;
    EXPECT_EQ(file.st_mode & 0777, 0600U) << name;
  }

  TempDir dir_;
  TempDir secret_;

 private:
  const std::string options_ = std::getenv("ASAN_OPTIONS") == nullptr ? "" : std::getenv("ASAN_OPTIONS");
};

// Root makes the first token of a terminal that will run as a service.
TEST_F(FolderOfAService, KeepsItsFiles) {
  makeToken(dir_.path(), "phone", "see");
  for (const char* name : {"gateway.db", "audit.log"}) expectOwned(name);
}

// Whoever owns the folder may not have root write elsewhere.
TEST_F(FolderOfAService, HasCommandsOfRootFollowNoPlantedLink) {
  for (const char* name : {"gateway.db", "audit.log", "terminal.lock"}) {
    addToken("phone");
    plantLink(name);
    addToken("more");
    runTerminal({"token", "revoke", "phone", "--data", dir_.path().string()});
    EXPECT_TRUE(std::filesystem::is_empty(secret_.path())) << name;
    // Not even into a folder that its owner may write.
    ASSERT_EQ(chown(secret_.path().c_str(), kService, kService), 0);
    addToken("again");
    EXPECT_TRUE(std::filesystem::is_empty(secret_.path())) << name;
    ASSERT_EQ(chown(secret_.path().c_str(), 0, 0), 0);
    for (const auto& entry : std::filesystem::directory_iterator(dir_.path())) std::filesystem::remove(entry);
  }
}

// Nor may a terminal that root starts on it.
TEST_F(FolderOfAService, HasATerminalOfRootFollowNoPlantedLink) {
  for (const char* name : {"terminal.log", "terminal.db", "tls.key.new"}) plantLink(name);
  const Outcome started = runTerminal({"--port", "0", "--tls-self", "--data", dir_.path().string()});
  EXPECT_THAT(started.error, HasSubstr("terminal.db"));
  EXPECT_TRUE(std::filesystem::is_empty(secret_.path()));
  std::filesystem::remove(dir_.path() / "terminal.db");
  TerminalProcess terminal(dir_.path());
  expectOwned("terminal.db");
  EXPECT_EQ(terminal.stop(), 0);
}

}  // namespace
}  // namespace orvane::test
