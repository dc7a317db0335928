#include <fstream>

#include "tests/phones/phonesfixture.h"

namespace orvane::test {
namespace {

// The schema of version 0.1.0, and what a later one added to it.
constexpr const char* kFirst = R"sql(
CREATE TABLE token (
  id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT NOT NULL UNIQUE, hash BLOB NOT NULL, rights INTEGER NOT NULL,
  made INTEGER NOT NULL, used INTEGER, expires INTEGER);
CREATE TABLE action (
  id INTEGER PRIMARY KEY, token INTEGER NOT NULL, key TEXT, made INTEGER NOT NULL, fingerprint BLOB NOT NULL,
  line TEXT, due TEXT, reply_topic BLOB, reply_message BLOB, reply_data BLOB, UNIQUE (token, key));
CREATE TABLE address (link TEXT NOT NULL);
INSERT INTO token (name, hash, rights, made) VALUES ('old', x'00', 7, 1);
INSERT INTO action (token, key, made, fingerprint, line) VALUES (1, 'k1', 1790000000, '', '{"key":"k1"');
PRAGMA user_version = 1;
)sql";
constexpr const char* kSecond = R"sql(
ALTER TABLE action ADD COLUMN boot INTEGER;
CREATE INDEX action_made ON action (made) WHERE key IS NOT NULL;
CREATE INDEX action_due ON action (id) WHERE due IS NOT NULL;
CREATE TABLE boot (id TEXT NOT NULL);
CREATE TABLE revocation (id INTEGER PRIMARY KEY AUTOINCREMENT, token INTEGER NOT NULL);
PRAGMA user_version = 2;
)sql";

TEST(GatewayDatabase, OfAnEarlierVersionIsUpgraded) {
  for (const char* later : {"", kSecond}) {
    SCOPED_TRACE(later);
    const TempDir dir;
    std::ofstream(dir.path() / "gateway.db").flush();
    std::filesystem::permissions(dir.path() / "gateway.db", std::filesystem::perms(0600));
    SQLite::Database(dir.path() / "gateway.db", SQLite::OPEN_READWRITE).exec(std::string(kFirst) + later);
    FakeLoop loop;
    terminal::GatewayStore store({.dataDir = dir.path(), .audit = {}}, loop);
    EXPECT_EQ(store.tokens()->tokens.at(0).name, "old");
    store.turn();
    loop.time.sleep(std::chrono::seconds(1));
    store.turn();
    std::ifstream audit(dir.path() / "audit.log");
    std::string line;
    std::getline(audit, line);
    EXPECT_THAT(line, HasSubstr(R"({"key":"k1","outcome":"unknown")"));
  }
}

}  // namespace
}  // namespace orvane::test
