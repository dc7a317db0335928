#include "tests/system/terminalprocess.h"

#include <boost/process/args.hpp>
#include <boost/process/io.hpp>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <istream>
#include <regex>
#include <sstream>
#include <stdexcept>

#include "tests/support/holdssoon.h"
#include "tests/system/contract.h"

namespace orvane::test {
namespace {

namespace process = boost::process;

// The user's own settings must not reach the tests.
const bool kIsCutOff = setenv("XDG_CONFIG_HOME", "/nowhere", 1) == 0 && unsetenv("POCKET_TOKEN") == 0;

std::vector<std::string> serveArguments(const std::filesystem::path& dataDir, const std::vector<std::string>& options) {
  std::vector<std::string> arguments{"--port", "0", "--quotes", "still", "--data", dataDir.string()};
  arguments.insert(arguments.end(), options.begin(), options.end());
  return arguments;
}

std::string readAll(std::istream& stream) {
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

}  // namespace

TerminalProcess::TerminalProcess(const std::filesystem::path& dataDir, const std::vector<std::string>& options,
                                 const std::string& token)
    : process_(POCKET_TERMINAL, process::args(serveArguments(dataDir, options)), process::std_out > output_),
      token_(token) {
  std::string link;
  std::getline(output_, link);
  std::smatch parts;
  const std::regex form("https?://127\\.0\\.0\\.[12]:([0-9]+)/(#token=([A-Za-z0-9_-]{43}))?");
  if (!std::regex_match(link, parts, form)) {
    throw std::runtime_error("the terminal did not start; its first line is: " + link);
  }
  port_ = static_cast<uint16_t>(std::stoi(parts[1]));
  if (!token_.empty()) return;
  token_ = parts[2].matched ? parts[3].str()
                            : makeToken(dataDir, "start-" + std::to_string(process_.id()), "see,cancel,trade");
}

TerminalProcess::~TerminalProcess() {
  if (process_.valid()) kill();
}

std::unique_ptr<terminal::Client> TerminalProcess::login(const std::string& token) const {
  auto client = std::make_unique<CheckedClient>(
      port_, terminal::ClientOptions{.certificate = {}, .patience = std::chrono::seconds(60)});
  client->login(token.empty() ? token_ : token);
  return client;
}

int TerminalProcess::stop() {
  ::kill(process_.id(), SIGTERM);
  if (holdsSoon([this] { return !process_.running(); })) return process_.exit_code();
  kill();
  return -1;
}

void TerminalProcess::kill() {
  ::kill(process_.id(), SIGKILL);
  process_.wait();
}

Outcome runTerminal(const std::vector<std::string>& arguments) {
  process::ipstream output;
  process::ipstream error;
  process::child child(POCKET_TERMINAL, process::args(arguments), process::std_out > output, process::std_err > error);
  Outcome outcome;
  outcome.output = readAll(output);
  outcome.error = readAll(error);
  child.wait();
  outcome.exitCode = child.exit_code();
  return outcome;
}

NoLeakCheck::NoLeakCheck() {
  if (const char* options = std::getenv("ASAN_OPTIONS")) options_ = options;
  setenv("ASAN_OPTIONS", (options_ + ":detect_leaks=0").c_str(), 1);
}

NoLeakCheck::~NoLeakCheck() { setenv("ASAN_OPTIONS", options_.c_str(), 1); }

std::string makeToken(const std::filesystem::path& dataDir, const std::string& name, const std::string& rights) {
  const Outcome made = runTerminal({"token", "add", name, "--rights", rights, "--data", dataDir.string()});
  if (made.exitCode != 0) throw std::runtime_error("no token: " + made.error);
  return made.output.substr(0, made.output.find('\n'));
}

std::string readFile(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return readAll(stream);
}

}  // namespace orvane::test
