#include "terminal/tokencommand.h"

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/Transaction.h>
#include <fmt/format.h>

#include "host/common.h"
#include "terminal/client/table.h"
#include "terminal/gatewaydatabase.h"
#include "terminal/json.h"
#include "terminal/phones/actionstore.h"
#include "terminal/tokens.h"

namespace orvane::terminal {
namespace {

constexpr const char* kFirst = "first";

std::string timeText(int64_t seconds) { return Timestamp{seconds * 1'000'000}.toISO8601String().substr(0, 19); }

std::string jsonRights(Rights rights) { return jsonString(fmt::format("{}", fmt::join(rights.names(), ","))); }

void record(SQLite::Database& db, const Settings& settings, const char* topic, const std::string& body) {
  recordCommand(db, settings.dataDir, {.token = {}, .address = "local", .topic = topic, .body = body, .key = {}});
}

void recordAdd(SQLite::Database& db, const Settings& settings, const std::string& name, Rights rights) {
  record(db, settings, "token.add", fmt::format(R"({{"name":{},"rights":{}}})", jsonString(name), jsonRights(rights)));
}

// Empty if no terminal was ever started.
std::string lastUrl(SQLite::Database& db) {
  SQLite::Statement row(db, "SELECT link FROM address");
  return row.executeStep() ? row.getColumn(0).getString() : std::string();
}

void noteUrl(SQLite::Database& db, const std::string& url) {
  SQLite::Transaction transaction(db, SQLite::TransactionBehavior::IMMEDIATE);
  db.exec("DELETE FROM address");
  SQLite::Statement statement(db, "INSERT INTO address VALUES (?)");
  statement.bind(1, url);
  statement.exec();
  transaction.commit();
}

void add(const Settings& settings) {
  SQLite::Database db = openGatewayDatabase(settings.dataDir);
  const TokenSettings& asked = *settings.token;
  const std::string text = addToken(db, asked.name, asked.rights);
  const std::string url = lastUrl(db);
  fmt::print("{}\n", text);
  if (!url.empty()) fmt::print("{}/#token={}\n", url, text);
  std::fputs("The token is shown only this once. Anyone who has it has its rights.\n", stderr);
  recordAdd(db, settings, asked.name, asked.rights);
}

void list(const Settings& settings) {
  SQLite::Database db = openGatewayDatabase(settings.dataDir, IfMissing::Fail);
  std::string rows;
  for (const Token& token : listTokens(db)) {
    rows += fmt::format(R"({}{{"name":{},"rights":{},"made":"{}","lastUsed":"{}"}})", rows.empty() ? "" : ",",
                        jsonString(token.name), jsonRights(token.rights), timeText(token.made),
                        token.lastUsed ? timeText(*token.lastUsed) : "never");
  }
  if (rows.empty()) throw std::runtime_error("there is no token: make one with pocket-terminal token add");
  fmt::print("{}", writeTable('[' + rows + ']', 0));
}

void revoke(const Settings& settings) {
  SQLite::Database db = openGatewayDatabase(settings.dataDir, IfMissing::Fail);
  revokeToken(db, settings.token->name);
  record(db, settings, "token.revoke", fmt::format(R"({{"name":{}}})", jsonString(settings.token->name)));
}

}  // namespace

int runToken(const Settings& settings) try {
  using Task = TokenSettings::Task;
  const Task task = settings.token->task;
  (task == Task::Add ? add : task == Task::List ? list : revoke)(settings);
  return EXIT_SUCCESS;
} catch (const std::exception& error) {
  std::fputs(fmt::format("pocket-terminal: {}\n", error.what()).c_str(), stderr);
  return EXIT_FAILURE;
}

void printLink(const Settings& settings, const std::string& url) {
  SQLite::Database db = openGatewayDatabase(settings.dataDir);
  noteUrl(db, url);
  if (!hadTokens(db)) {
    fmt::print("{}/#token={}\n", url, addToken(db, kFirst, Rights::all()));
    recordAdd(db, settings, kFirst, Rights::all());
  } else {
    fmt::print("{}/\nA phone needs a token: pocket-terminal token add NAME --rights see,cancel,trade --data {}\n", url,
               settings.dataDir.string());
  }
  std::fflush(stdout);
}

}  // namespace orvane::terminal
