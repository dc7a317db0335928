#include "terminal/tokens.h"

#include <algorithm>
#include <ctime>
#include <stdexcept>

#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/Transaction.h>
#include <SQLiteCpp/VariadicBind.h>
#include <fmt/format.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>

#include "terminal/gatewaydatabase.h"
#include "terminal/plainname.h"

namespace orvane::terminal {
namespace {

constexpr size_t kTokenLength = 43;
constexpr int64_t kOwnTokenSeconds = 60;

int64_t now() { return std::time(nullptr); }

std::string makeText() {
  Digest bytes{};
  if (RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) != 1) {
    throw std::runtime_error("cannot make a token: the system's random numbers are not available");
  }
  std::array<unsigned char, 4 * ((bytes.size() + 2) / 3) + 1> text{};
  EVP_EncodeBlock(text.data(), bytes.data(), static_cast<int>(bytes.size()));
  std::string token(text.begin(), text.begin() + kTokenLength);
  for (char& c : token) c = c == '+' ? '-' : c == '/' ? '_' : c;
  return token;
}

void insert(SQLite::Database& db, const std::string& name, Rights rights, const Digest& hash,
            std::optional<int64_t> expires) {
  SQLite::Statement statement(db, "INSERT INTO token (name, rights, made, hash, expires) VALUES (?, ?, ?, ?, ?)");
  SQLite::bind(statement, name, rights.bits(), now());
  statement.bind(4, hash.data(), static_cast<int>(hash.size()));
  if (expires) statement.bind(5, *expires);
  statement.exec();
}

int erase(SQLite::Database& db, const std::string& name) {
  SQLite::Statement statement(db, "DELETE FROM token WHERE name = ?");
  statement.bind(1, name);
  return statement.exec();
}

std::optional<int64_t> optionalInt(SQLite::Statement& row, int column) {
  if (row.isColumnNull(column)) return std::nullopt;
  return row.getColumn(column).getInt64();
}

// A hash of another length is damage: it becomes zeros, which no token has.
Token readRow(SQLite::Statement& row) {
  Token token;
  token.id = row.getColumn(0).getInt64();
  token.name = row.getColumn(1).getString();
  const std::string hash = row.getColumn(2).getString();
  if (hash.size() == token.hash.size()) std::copy(hash.begin(), hash.end(), token.hash.begin());
  token.rights = Rights(row.getColumn(3).getInt());
  token.made = row.getColumn(4).getInt64();
  token.lastUsed = optionalInt(row, 5);
  token.expires = optionalInt(row, 6);
  return token;
}

std::vector<Token> selectTokens(SQLite::Database& db, const std::string& which) {
  SQLite::Statement row(db, "SELECT id, name, hash, rights, made, used, expires FROM token " + which);
  std::vector<Token> tokens;
  while (row.executeStep()) tokens.push_back(readRow(row));
  return tokens;
}

}  // namespace

std::string addToken(SQLite::Database& db, const std::string& name, Rights rights) {
  if (!isPlainName(name)) {
    throw std::runtime_error(fmt::format("\"{}\" is not a valid token name: use {}", name, kPlainNameRule));
  }
  SQLite::Transaction transaction(db, SQLite::TransactionBehavior::IMMEDIATE);
  SQLite::Statement taken(db, "SELECT 1 FROM token WHERE name = ?");
  taken.bind(1, name);
  if (taken.executeStep()) {
    throw std::runtime_error(fmt::format("there is a token \"{}\": revoke it first, or use another name", name));
  }
  std::string text = makeText();
  insert(db, name, rights, sha256(text), std::nullopt);
  taken.reset();
  transaction.commit();
  return text;
}

int64_t revokeToken(SQLite::Database& db, const std::string& name) {
  SQLite::Transaction transaction(db, SQLite::TransactionBehavior::IMMEDIATE);
  SQLite::Statement revocation(db, "INSERT INTO revocation (token) SELECT id FROM token WHERE name = ?");
  revocation.bind(1, name);
  revocation.exec();
  const int64_t id = db.getLastInsertRowid();
  if (erase(db, name) == 0) {
    throw std::runtime_error(fmt::format("there is no token \"{}\": list them with pocket-terminal token list", name));
  }
  transaction.commit();
  return id;
}

bool isConfirmed(SQLite::Database& db, int64_t revocation) {
  SQLite::Statement row(db, "SELECT 1 FROM revocation WHERE id = ?");
  row.bind(1, revocation);
  return !row.executeStep();
}

void forgetRevocation(SQLite::Database& db, int64_t revocation) {
  SQLite::Statement row(db, "DELETE FROM revocation WHERE id = ?");
  row.bind(1, revocation);
  row.exec();
}

std::vector<Token> listTokens(SQLite::Database& db) { return selectTokens(db, "WHERE expires IS NULL ORDER BY name"); }

std::vector<Token> readTokens(SQLite::Database& db) { return selectTokens(db, ""); }

bool hadTokens(SQLite::Database& db) {
  return db.execAndGet("SELECT count(*) FROM sqlite_sequence WHERE name = 'token'").getInt() > 0;
}

// The blank makes the name differ from every name that a user can choose.
OwnToken::OwnToken(const std::filesystem::path& dataDir) try
    : db_(openGatewayDatabase(dataDir, IfMissing::Fail)), text_(makeText()) {
  const Digest hash = sha256(text_);
  name_ = fmt::format("call {:02x}{:02x}{:02x}{:02x}", hash[0], hash[1], hash[2], hash[3]);
  SQLite::Transaction transaction(db_, SQLite::TransactionBehavior::IMMEDIATE);
  db_.exec(fmt::format("DELETE FROM token WHERE expires <= {}", now()));
  insert(db_, name_, Rights::all(), hash, now() + kOwnTokenSeconds);
  transaction.commit();
} catch (const SQLite::Exception& error) {
  throw std::runtime_error(describeFault(dataDir / "gateway.db", error));
}

OwnToken::~OwnToken() {
  try {
    erase(db_, name_);
  } catch (const SQLite::Exception&) {
    // It expires within the minute anyway.
  }
}

}  // namespace orvane::terminal
