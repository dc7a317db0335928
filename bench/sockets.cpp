#include <boost/process/args.hpp>
#include <boost/process/child.hpp>
#include <boost/process/io.hpp>
#include <fstream>
#include <memory>

#include <fmt/format.h>

#include "bench/figure.h"
#include "bench/paperdesk.h"
#include "bench/phones.h"
#include "tests/system/terminalprocess.h"

namespace orvane::bench {
namespace {

constexpr size_t kPhones = 100;
constexpr size_t kRequests = 1000;  // of one slice

// This program again, as a server that knows one reply.
class EchoProcess {
 public:
  explicit EchoProcess(const std::filesystem::path& replyFile)
      : process_("/proc/self/exe", boost::process::args({"--echo-server", replyFile.string()}),
                 boost::process::std_out > output_) {
    output_ >> port_;
  }
  ~EchoProcess() { process_.terminate(); }
  EchoProcess(const EchoProcess&) = delete;
  EchoProcess& operator=(const EchoProcess&) = delete;

  uint16_t port() const { return port_; }

 private:
  boost::process::ipstream output_;
  boost::process::child process_;
  uint16_t port_ = 0;
};

const std::filesystem::path& withDesk(const std::filesystem::path& folder) {
  makePaperDesk(folder, 1);
  return folder;
}

struct Bench {
  Bench() {
    const std::string body = fmt::format("[{}]", kFirstAccountOfTwenty);
    const std::string request = fmt::format(R"({{"id":1,"topic":"position.list","data":{}}})", body);
    const std::string data = terminal.login()->request("position.list", body).data;
    const std::string reply = fmt::format(R"({{"id":1,"topic":"position.list","message":"","data":{}}})", data);
    std::ofstream(folder.path() / "reply") << reply;
    echo = std::make_unique<EchoProcess>(folder.path() / "reply");
    const std::string login = fmt::format(R"({{"topic":"login","token":"{}"}})", terminal.token());
    ours = std::make_unique<Phones>(terminal.port(), kPhones, login, request, reply);
    bare = std::make_unique<Phones>(echo->port(), kPhones, "", request, reply);
  }

  test::TempDir folder;
  test::TerminalProcess terminal{withDesk(folder.path())};
  std::unique_ptr<EchoProcess> echo;
  std::unique_ptr<Phones> ours;
  std::unique_ptr<Phones> bare;
};

Sides sides() {
  const auto bench = std::make_shared<Bench>();
  return {[bench] { return bench->ours->load(kRequests); }, [bench] { return bench->bare->load(kRequests); }};
}

}  // namespace

std::vector<Figure> socketFigures() {
  return {{"terminal, 100 WebSockets, position.list of 20 rows", "bare Beast server, the same bytes", "requests/s",
           Bound::AtLeast, 0.60, 0.85, 31, sides}};
}

}  // namespace orvane::bench
