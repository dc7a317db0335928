#include "tests/system/terminalprocess.h"

#include <fstream>
#include <iterator>
#include <regex>
#include <stdexcept>

#include "tests/support/rawsocket.h"
#include "tests/system/contract.h"

namespace orvane::test {
namespace {

std::vector<std::string> serveArguments(const std::filesystem::path& dataDir, const std::vector<std::string>& options) {
  std::vector<std::string> arguments{"--port", "0", "--quotes", "still", "--data", dataDir.string()};
  arguments.insert(arguments.end(), options.begin(), options.end());
  return arguments;
}

}  // namespace

TerminalProcess::TerminalProcess(const std::filesystem::path& dataDir, const std::vector<std::string>& options,
                                 const std::string& token)
    : dir_(dataDir), program_(POCKET_TERMINAL, serveArguments(dataDir, options)), token_(token) {
  const std::string link = program_.readLine();
  std::smatch parts;
  const std::regex form("https?://127\\.0\\.0\\.[12]:([0-9]+)/(#token=([A-Za-z0-9_-]{43}))?");
  if (!std::regex_match(link, parts, form)) {
    throw std::runtime_error("the terminal did not start; its first line is: " + link);
  }
  port_ = static_cast<uint16_t>(std::stoi(parts[1]));
  if (!token_.empty()) return;
  token_ = parts[2].matched ? parts[3].str()
                            : test::makeToken(dataDir, "start-" + std::to_string(program_.pid()), "see,cancel,trade");
}

std::unique_ptr<terminal::Client> TerminalProcess::login(const std::string& token) const {
  auto client = std::make_unique<CheckedClient>(
      port_, terminal::ClientOptions{.certificate = {}, .patience = std::chrono::seconds(60)});
  client->login(token.empty() ? token_ : token);
  return client;
}

Outcome TerminalProcess::run(std::vector<std::string> arguments) const {
  arguments.insert(arguments.end(), {"--data", dir_.string()});
  return runTerminal(arguments);
}

std::string TerminalProcess::makeToken(const std::string& name, const std::string& rights) const {
  return test::makeToken(dir_, name, rights);
}

std::string TerminalProcess::log() const { return readFile(dir_ / "terminal.log"); }

bool TerminalProcess::isReady() const { return httpGet(port_, "/health/ready").starts_with("HTTP/1.1 200 "); }

Outcome runTerminal(const std::vector<std::string>& arguments) { return runProgram(POCKET_TERMINAL, arguments); }

std::string makeToken(const std::filesystem::path& dataDir, const std::string& name, const std::string& rights) {
  const Outcome made = runTerminal({"token", "add", name, "--rights", rights, "--data", dataDir.string()});
  if (made.exitCode != 0) throw std::runtime_error("no token: " + made.error);
  return made.output.substr(0, made.output.find('\n'));
}

std::string readFile(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace orvane::test
