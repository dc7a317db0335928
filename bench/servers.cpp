#include "bench/servers.h"

#include <boost/process/args.hpp>
#include <boost/process/io.hpp>
#include <ctime>
#include <fstream>
#include <istream>
#include <regex>
#include <stdexcept>

#include <fmt/format.h>
#include <unistd.h>

#include "bench/paperdesk.h"
#include "bench/timing.h"

namespace orvane::bench {

Exchange exchangeWith(const Server& terminal, const std::string& login, std::string_view topic, std::string_view body) {
  Exchange exchange{login, fmt::format(R"({{"id":1,"topic":"{}","data":{}}})", topic, body), ""};
  exchange.reply = askOnce(terminal.port(), exchange.login, exchange.request);
  if (exchange.reply.find(R"("message":"",)") == std::string::npos) {
    throw std::runtime_error("the terminal refuses a request: " + exchange.reply.substr(0, 4000));
  }
  return exchange;
}

Server::Server(const std::filesystem::path& program, const std::vector<std::string>& arguments)
    : process_(program.string(), boost::process::args(arguments), boost::process::std_out > output_) {
  std::string line;
  std::getline(output_, line);
  std::smatch parts;
  if (!std::regex_search(line, parts, std::regex("^https?://127\\.0\\.0\\.1:([0-9]+)/"))) {
    throw std::runtime_error(fmt::format("{} did not start; its first line is: {}", program.string(), line));
  }
  port_ = static_cast<uint16_t>(std::stoi(parts[1]));
}

Server::~Server() {
  std::error_code ignored;  // it may have ended by itself
  process_.terminate(ignored);
}

double Server::residentBytes() const {
  std::ifstream file(fmt::format("/proc/{}/statm", process_.id()));
  size_t total = 0;
  size_t resident = 0;
  if (!(file >> total >> resident)) throw std::runtime_error("cannot read a server's memory from /proc");
  return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE));
}

double processorTime(int pid) {
  clockid_t clock{};
  if (clock_getcpuclockid(pid, &clock) != 0) throw std::runtime_error("cannot read a server's processor time");
  return clockTime(clock);
}

Desk::Desk(size_t rows) {
  if (rows > 0) makePaperDesk(folder(), rows);
  login_ = fmt::format(R"({{"topic":"login","token":"{}"}})", test::makeToken(folder(), "bench", "see,cancel,trade"));
}

Server Desk::start(std::string_view quotes) const {
  return {POCKET_TERMINAL, {"--port", "0", "--quotes", std::string(quotes), "--data", folder().string()}};
}

Server startBareServer(const std::filesystem::path& folder, const std::string& reply) {
  const std::filesystem::path file = folder / fmt::format("reply-{}", reply.size());
  std::ofstream(file) << reply;
  return {"/proc/self/exe", {"--bare-server", file.string()}};
}

ServerPair::ServerPair(const Desk& desk, const Server& terminal, std::string_view topic, std::string_view body)
    : terminal_(terminal),
      exchange_(exchangeWith(terminal, desk.login(), topic, body)),
      bare_(startBareServer(desk.folder(), exchange_.reply)) {}

}  // namespace orvane::bench
