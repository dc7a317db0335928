// Starts of a terminal on a disk that cannot be written, or with a file that another program has locked.

#include <cerrno>
#include <functional>
#include <memory>

#include <SQLiteCpp/Database.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/holdssoon.h"
#include "tests/support/orderclients.h"
#include "tests/support/rawsocket.h"
#include "tests/system/terminalprocess.h"
#include "tests/system/trouble.h"

namespace orvane::test {
namespace {

using terminal::Client;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

std::string place(Client& phone) { return phone.request("order.new", orderData("mine")).message; }

// The same order each time, under a key.
std::string placeKeyed(Client& phone) {
  phone.send(orderFrame("keyed"));
  terminal::Reply reply = phone.receive();
  while (reply.id != "\"keyed\"") reply = phone.receive();
  return reply.message;
}

// A terminal that was stopped or killed is started in a trouble, and goes on by itself after its end.
void startThrough(const std::filesystem::path& dir, bool isKilled, const std::function<Trouble()>& begin,
                  const std::string& reason) {
  std::string token;
  {
    TerminalProcess first(dir);
    token = first.token();
    EXPECT_EQ(place(*first.login()), "");
    EXPECT_EQ(placeKeyed(*first.login()), "");
    SQLite::Database db(dir / "gateway.db", SQLite::OPEN_READWRITE);
    EXPECT_TRUE(holdsSoon([&] {
      return db.execAndGet("SELECT count(*) FROM action WHERE reply_topic IS NOT NULL").getInt() == 1;
    })) << "until the reply is stored, a crash makes it unknown";
    if (!isKilled) {
      EXPECT_EQ(first.stop(), 0);
    }
  }
  std::filesystem::remove(dir / "terminal.lock");  // as version 0.1.0 leaves a folder
  Trouble trouble = begin();
  TerminalProcess terminal(dir, {}, token);
  EXPECT_TRUE(holdsSoon([&] { return !terminal.isReady(); }));
  EXPECT_THAT(httpGet(terminal.port(), "/health"), AllOf(HasSubstr(R"("gateway:writes":[{"status":"fail")"),
                                                         HasSubstr(R"("database:writes":[{"status":"fail")")));
  const auto phone = terminal.login();
  for (const char* topic : {"account.list", "capital.list", "position.list", "trader.list", "monitor.list"}) {
    EXPECT_EQ(phone->request(topic, "[1]").message, "") << topic;
  }
  EXPECT_THAT(phone->request("order.list", "[1]").data, HasSubstr(R"("source":"mine")"));
  EXPECT_THAT(place(*phone), AllOf(HasSubstr((dir / "gateway.db").string()), HasSubstr(reason)));
  EXPECT_THAT(placeKeyed(*phone), StartsWith("the terminal cannot look up the key of this request, so it does nothing "
                                             "now: cannot use " +
                                             (dir / "gateway.db").string()));
  EXPECT_THAT(terminal.run({"token", "list"}).output, HasSubstr("first  see,cancel,trade"));
  trouble.reset();
  EXPECT_TRUE(holdsSoon([&] { return terminal.isReady(); }));
  EXPECT_EQ(place(*phone), "");
  EXPECT_EQ(placeKeyed(*phone), "") << "the reply of the first time";
  const std::string orders = phone->request("order.list", "[1]").data;
  EXPECT_EQ(orders.find(R"("keyed")"), orders.rfind(R"("keyed")"));
  EXPECT_EQ(terminal.login(terminal.makeToken("late", "see"))->request("account.list").message, "");
  EXPECT_THAT(terminal.run({"token", "revoke", "late"}).output,
              HasSubstr("The running terminal begins no further request of it"));
  EXPECT_EQ(terminal.stop(), 0);
}

TEST(StartFault, AFullDiskIsServedUntilThereIsRoom) {
  for (const bool isKilled : {false, true}) {
    SCOPED_TRACE(isKilled);
    const TempDir dir;
    const FaultyDisk disk;
    startThrough(
        dir.path(), isKilled, [&] { return disk.fail("full"); }, "make room on its disk");
  }
}

// A folder that can be read only: mounted so for root, whom permissions do not stop.
class ReadOnlyFolder {
 public:
  explicit ReadOnlyFolder(std::filesystem::path dir) : dir_(std::move(dir)) {
    if (geteuid() != 0) return;
    isMounted_ = unshare(CLONE_NEWNS) == 0 && mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                 mount(dir_.c_str(), dir_.c_str(), nullptr, MS_BIND, nullptr) == 0;
  }
  ~ReadOnlyFolder() {
    if (isMounted_) umount2(dir_.c_str(), MNT_DETACH);
  }
  ReadOnlyFolder(const ReadOnlyFolder&) = delete;
  ReadOnlyFolder& operator=(const ReadOnlyFolder&) = delete;

  bool isPossible() const { return isMounted_ || geteuid() != 0; }

  Trouble close() const {
    set(true);
    return {nullptr, [this](void*) { set(false); }};
  }

 private:
  void set(bool isReadOnly) const {
    if (isMounted_) {
      const unsigned long flags = isReadOnly ? MS_REMOUNT | MS_BIND | MS_RDONLY : MS_REMOUNT | MS_BIND;
      EXPECT_EQ(mount(nullptr, dir_.c_str(), nullptr, flags, nullptr), 0) << errno;
      return;
    }
    for (const auto& entry : std::filesystem::directory_iterator(dir_)) {
      EXPECT_EQ(chmod(entry.path().c_str(), isReadOnly ? 0400 : 0600), 0);
    }
    EXPECT_EQ(chmod(dir_.c_str(), isReadOnly ? 0500 : 0700), 0);
  }

  std::filesystem::path dir_;
  bool isMounted_ = false;
};

TEST(StartFault, AReadOnlyFolderIsServedUntilItCanBeWritten) {
  for (const bool isKilled : {false, true}) {
    SCOPED_TRACE(isKilled);
    const TempDir dir;
    const ReadOnlyFolder folder(dir.path());
    if (!folder.isPossible()) GTEST_SKIP() << "NOT TESTED: root may not mount here, and permissions do not stop root";
    startThrough(
        dir.path(), isKilled, [&] { return folder.close(); }, "let its owner write to the file and its folder");
  }
}

// The link is printed although it cannot be stored, which is done later.
TEST(StartFault, ALockedDatabaseEndsNoStart) {
  const TempDir dir;
  std::string token;
  {
    TerminalProcess first(dir.path());
    token = first.token();
    EXPECT_EQ(first.stop(), 0);
  }
  Trouble lock = lockDatabase(dir.path());
  TerminalProcess terminal(dir.path(), {}, token);
  EXPECT_EQ(terminal.login()->request("account.list").message, "");
  EXPECT_TRUE(holdsSoon([&] { return !terminal.isReady(); }));
  const auto isLocked = HasSubstr("gateway.db: database is locked; end the program that holds it");
  EXPECT_THAT(terminal.run({"token", "add", "x", "--rights", "see"}).error, isLocked);
  EXPECT_THAT(terminal.run({"call", "account.list"}).error, isLocked);
  lock.reset();
  EXPECT_TRUE(holdsSoon([&] { return terminal.isReady(); }));
  SQLite::Database db(dir.path() / "gateway.db");
  EXPECT_EQ(db.execAndGet("SELECT link FROM address").getString(),
            fmt::format("http://127.0.0.1:{}/", terminal.port()));
  EXPECT_EQ(terminal.stop(), 0);
}

}  // namespace
}  // namespace orvane::test
