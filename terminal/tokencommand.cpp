#include "terminal/tokencommand.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/Transaction.h>
#include <fmt/format.h>

#include "host/common.h"
#include "terminal/client/table.h"
#include "terminal/gatewaydatabase.h"
#include "terminal/json.h"
#include "terminal/ownersfile.h"
#include "terminal/phones/auditlog.h"
#include "terminal/phones/audittext.h"
#include "terminal/phones/sql.h"
#include "terminal/runmark.h"
#include "terminal/tokens.h"

namespace orvane::terminal {
namespace {

constexpr const char* kFirst = "first";
constexpr std::chrono::seconds kConfirmationTime{5};

std::string timeText(int64_t seconds) { return Timestamp{seconds * 1'000'000}.toISO8601String().substr(0, 19); }

std::string jsonRights(Rights rights) { return jsonString(fmt::format("{}", fmt::join(rights.names(), ","))); }

void report(const Settings& settings, const std::exception& error) {
  const auto* fault = dynamic_cast<const SQLite::Exception*>(&error);
  const std::string text = fault == nullptr ? error.what() : describeFault(settings.dataDir / "gateway.db", *fault);
  std::fputs(fmt::format("pocket-terminal: {}\n", text).c_str(), stderr);
}

// Repeats `isDone` until it is true. False if that does not happen within the limit.
template <typename IsDone>
bool await(std::chrono::milliseconds limit, const IsDone& isDone) {
  constexpr std::chrono::milliseconds kPause{10};
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!isDone()) {
    if (std::chrono::steady_clock::now() >= end) return false;
    std::this_thread::sleep_for(kPause);
  }
  return true;
}

// The audit line of a command. If another process has locked audit.log for long, a terminal writes it later.
void record(SQLite::Database& db, const Settings& settings, const char* topic, const std::string& body) {
  const WallTime now = std::chrono::system_clock::now();
  const AuditLog log(settings.dataDir, settings.audit);
  const std::string line =
      auditHead({.token = {}, .address = "local", .topic = topic, .body = body, .key = {}}, now) + auditReply({});
  std::string fault;
  const auto append = [&] {
    try {
      log.append({line});
      return true;
    } catch (const std::runtime_error& error) {
      fault = error.what();
      return false;
    }
  };
  if (await(std::chrono::milliseconds(500), append)) return;
  keepAuditLine(db, line, std::chrono::system_clock::to_time_t(now));
  std::fputs(
      fmt::format("{}\nThe line is kept, and a terminal adds it to the audit as soon as it can.\n", fault).c_str(),
      stderr);
}

void recordAdd(SQLite::Database& db, const Settings& settings, const std::string& name, Rights rights) {
  record(db, settings, "token.add", fmt::format(R"({{"name":{},"rights":{}}})", jsonString(name), jsonRights(rights)));
}

// Empty if no terminal was ever started.
std::string lastLink(SQLite::Database& db) {
  SQLite::Statement row(db, "SELECT link FROM address");
  return row.executeStep() ? row.getColumn(0).getString() : std::string();
}

std::string withToken(const std::string& link, const std::string& token) {
  return link + (link.find('#') == std::string::npos ? "#token=" : "&token=") + token;
}

void add(const Settings& settings) {
  SQLite::Database db = openGatewayDatabase(settings.dataDir);
  const TokenSettings& asked = *settings.token;
  const std::string text = addToken(db, asked.name, asked.rights);
  const std::string link = lastLink(db);
  fmt::print("{}\n", text);
  if (!link.empty()) fmt::print("{}\n", withToken(link, text));
  std::fputs("The token is shown only this once. Anyone who has it has its rights.\n", stderr);
  recordAdd(db, settings, asked.name, asked.rights);
}

// Also of a folder that cannot be written.
std::vector<Token> readList(const std::filesystem::path& dataDir) {
  std::vector<Token> tokens;
  const auto read = [&tokens](SQLite::Database& db) { tokens = listTokens(db); };
  try {
    SQLite::Database db = openGatewayDatabase(dataDir, IfMissing::Fail);
    read(db);
  } catch (const DiskFault& fault) {
    readGatewayCopy(dataDir, fault, read);
  }
  return tokens;
}

void list(const Settings& settings) {
  std::string rows;
  for (const Token& token : readList(settings.dataDir)) {
    rows += fmt::format(R"({}{{"name":{},"rights":{},"made":"{}","lastUsed":"{}"}})", rows.empty() ? "" : ",",
                        jsonString(token.name), jsonRights(token.rights), timeText(token.made),
                        token.lastUsed ? timeText(*token.lastUsed) : "never");
  }
  if (rows.empty()) throw std::runtime_error("there is no token: make one with pocket-terminal token add");
  fmt::print("{}", writeTable('[' + rows + ']', 0));
}

void revoke(const Settings& settings) {
  SQLite::Database db = openGatewayDatabase(settings.dataDir, IfMissing::Fail);
  const int64_t revocation = revokeToken(db, settings.token->name);
  record(db, settings, "token.revoke", fmt::format(R"({{"name":{}}})", jsonString(settings.token->name)));
  if (!RunMark::isSet(settings.dataDir)) {
    forgetRevocation(db, revocation);
    fmt::print("{} is revoked. No terminal runs on {}.\n", settings.token->name, settings.dataDir.string());
    return;
  }
  if (await(kConfirmationTime, [&] { return isConfirmed(db, revocation); })) {
    fmt::print("{} is revoked. The running terminal begins no further request of it.\n", settings.token->name);
    return;
  }
  throw std::runtime_error(
      fmt::format("{} is revoked, but the running terminal has not confirmed within {} s that it begins no further "
                  "request of it: look at its log, or stop it",
                  settings.token->name, kConfirmationTime.count()));
}

}  // namespace

int runToken(const Settings& settings) try {
  actAsOwner(settings.dataDir);
  using Task = TokenSettings::Task;
  const Task task = settings.token->task;
  (task == Task::Add ? add : task == Task::List ? list : revoke)(settings);
  return EXIT_SUCCESS;
} catch (const std::exception& error) {
  report(settings, error);
  return EXIT_FAILURE;
}

void printLink(const Settings& settings, const std::string& link) {
  std::string first;
  try {
    SQLite::Database db = openGatewayDatabase(settings.dataDir);
    if (!hadTokens(db)) {
      first = addToken(db, kFirst, Rights::all());
      recordAdd(db, settings, kFirst, Rights::all());
    }
  } catch (const std::exception& error) {
    report(settings, error);
  }
  if (!first.empty()) {
    fmt::print("{}\n", withToken(link, first));
  } else {
    fmt::print("{}\nA phone needs a token: pocket-terminal token add NAME --rights see,cancel,trade --data {}\n", link,
               settings.dataDir.string());
  }
  std::fflush(stdout);
}

}  // namespace orvane::terminal
