#include <fstream>
#include <iterator>
#include <sstream>

#include <SQLiteCpp/Database.h>
#include <fmt/format.h>
#include <gmock/gmock.h>

#include "tests/system/terminalprocess.h"

namespace orvane::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class Commands : public testing::Test {
 protected:
  // Runs a command and compares its exit code, a part of its errors and the start of its output. {data}, {port} and
  // {token} are those of a running terminal, {other} is another folder.
  void expect(const std::string& command, int exitCode, const std::string& error, const std::string& output = "") {
    SCOPED_TRACE(command);
    const auto filledIn = [this](const std::string& text) {
      return fmt::format(fmt::runtime(text), fmt::arg("data", data_.path().string()),
                         fmt::arg("port", terminal_.port()), fmt::arg("token", terminal_.token()),
                         fmt::arg("other", other_.path().string()));
    };
    std::istringstream words(filledIn(command));
    const Outcome outcome = runTerminal({std::istream_iterator<std::string>(words), {}});
    EXPECT_EQ(outcome.exitCode, exitCode);
    EXPECT_THAT(outcome.error, HasSubstr(filledIn(error)));
    EXPECT_THAT(outcome.output, StartsWith(output));
  }

  TempDir data_;
  TempDir other_;
  TerminalProcess terminal_{data_.path()};
};

TEST_F(Commands, CallTellsTheOutcome) {
  expect("call account.list --port {port} --data {data}", 0, "", R"([{"userCode":"80010001",)");
  expect("call account.list --port {port} --token {token}", 0, "", R"([{"userCode":"80010001",)");
  expect("call capital.list {{}} --port {port} --data {data}", 1, "Data member not array\n");
  expect("call no.topic --terminal-type 24 --port {port} --data {data}", 1, "未知的功能: no.topic\n");
  expect("call account.list --port 1 --data {data}", 2, "127.0.0.1:1: Connection refused\nIs the terminal running");
  expect("call account.list --port {port} --token x", 2, "wrong token");
  expect("call account.list --port {port} --data {data}/none", 2, "/none/gateway.db: start the terminal once");
  expect("call capital.list [1 --port {port}", 2, "not JSON: Missing a comma or ']' after an array element. at byte 2");
  expect("call --port {port}", 2, "TOPIC is required");
}

TEST_F(Commands, TellMistakesWithTokens) {
  expect("token add first --rights see --data {data}", 1, "there is a token \"first\": revoke it first, or use");
  expect("token add a,b --rights see --data {data}", 1, "\"a,b\" is not a valid token name: use 1 to 64 characters");
  expect("token add x --rights see,sell --data {data}", 2,
         "\"sell\" is not a right: name one or more of see,cancel,trade");
  expect("token add x --rights see, --data {data}", 2, "\"\" is not a right");
  expect("token add x --data {data}", 2, "--rights is required");
  expect("token revoke x --data {data}", 1, "there is no token \"x\": list them with pocket-terminal token list");
  expect("token --data {data}", 2, "A subcommand is required");
  expect("token list --data /dev/null", 1, "there is no /dev/null/gateway.db: start the terminal once");
  expect("token add x --rights see --data /dev/null", 1, "cannot write to the folder /dev/null: ");
  SQLite::Database(data_.path() / "gateway.db", SQLite::OPEN_READWRITE).exec("PRAGMA user_version = 4");
  expect("token list --data {data}", 1, "gateway.db: its version is 4, this program reads version 3");
}

TEST_F(Commands, TellWhyTheTerminalCannotStart) {
  const std::string start = "--port 0 --data {other} ";
  const std::string beyond = "beyond this machine, on {}, the terminal listens with TLS only: add --tls-self";
  expect(start + "--listen 0.0.0.0", 1, fmt::format(fmt::runtime(beyond), "0.0.0.0"));
  expect(start + "--listen ::", 1, fmt::format(fmt::runtime(beyond), "::"));
  expect(start + "--listen home", 2, "home is not an IP address");
  expect(start + "--listen 192.0.2.1 --tls-self", 1, "choose an address of this machine with --listen");
  expect(start + "--tls-cert /none --tls-key /none", 1, "cannot use the certificate /none: No such file or directory");
  expect(start + "--tls-cert /dev/null --tls-key /none", 1, "/dev/null: it must be a PEM certificate (");
  expect(start + "--tls-cert /none", 2, "its key is missing: add --tls-key");
  expect(start + "--allow-origin https://a/b", 2,
         "https://a/b is not an origin such as https://trade.example.com:8443");
  expect("--data {other} --port {port}", 1, "cannot listen on 127.0.0.1:{port}: Address already in use");
  std::filesystem::permissions(other_.path() / "gateway.db", std::filesystem::perms(0644));
  expect(start, 1, "other users can read it");
}

TEST_F(Commands, CheckTheSettingsFile) {
  const std::string file = (other_.path() / "terminal.toml").string();
  const auto expectWith = [&](const std::string& settings, int exitCode, const std::string& error) {
    std::ofstream(file) << fmt::format("data = \"{}\"\n", other_.path().string()) << settings;
    expect("token list --config " + file, exitCode, error);
  };
  expectWith("# here\nlog-level = \"debug\"\nidle-timeout = 20\n", 1, "there is no {other}/gateway.db");
  expectWith("colour = \"red\"\n", 2, file + ": colour is not a setting");
  expectWith("[gateway]\nport = 1\n", 2, file + ": gateway is not a setting");
  expectWith("[call]\ntoken = \"x\"\n", 2, file + ": call.token is not a setting");
  expectWith("log-level = \"loud\"\n", 2,
             "--log-level: loud not in {{trace,debug,info,warn,error,off}} (the settings file " + file);
  expectWith("port = \"http\"\n", 2, "Could not convert: --port = http (the settings file " + file);
  expect("--config {other}/none", 2, "the settings file {other}/none was not readable");
}

}  // namespace
}  // namespace orvane::test
