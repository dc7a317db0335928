// Usage: order-load PROGRAM... Orders per second through each pocket-terminal, such as one of this version and one of
// an older, on the disk as it is and with 10 ms added to each flush. Prints a Markdown table.
#include <algorithm>
#include <boost/asio/io_context.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/process/args.hpp>
#include <boost/process/child.hpp>
#include <boost/process/env.hpp>
#include <boost/process/environment.hpp>
#include <boost/process/io.hpp>
#include <boost/process/pipe.hpp>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <regex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <SQLiteCpp/SQLiteCpp.h>
#include <fmt/format.h>

#include "bench/servers.h"
#include "bench/timing.h"
#include "bench/websocket.h"

namespace orvane::bench {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
using boost::system::error_code;

constexpr size_t kClients = 100;
constexpr size_t kTokens = 2;    // a token may have 85 connections
constexpr size_t kUnderWay = 8;  // requests of a client without a reply
constexpr double kSeconds = 5;
constexpr std::chrono::milliseconds kCancelPeriod{50};

std::string orderText(size_t number) {
  return fmt::format(
      R"({{"index":1,"hashCode":1000001,"side":1,"combOffset":1,"priceType":1,"price":3100,"offset":0,"volume":1,)"
      R"("insertTimestamp":0,"source":"{}"}})",
      number);
}

// Throws std::runtime_error unless the message is the answer of a success.
void requireSuccess(const std::string& message) {
  if (message.find(R"("message":"",)") == std::string::npos) {
    throw std::runtime_error("an order was refused: " + message.substr(0, 400));
  }
}

// A terminal of any version, with funds for all orders.
class Subject {
 public:
  explicit Subject(const std::filesystem::path& program) : program_(program) {
    { const Server first(program_, arguments()); }  // makes the database
    SQLite::Database(folder_.path() / "terminal.db", SQLite::OPEN_READWRITE)
        .exec("UPDATE account SET pre_balance = 1e12 WHERE idx = 1");
    for (size_t i = 0; i < kTokens; ++i) logins_.push_back(makeLogin(fmt::format("trade{}", i), "trade"));
    cancelling_ = makeLogin("cancel", "see,cancel,trade");
    server_ = std::make_unique<Server>(program_, arguments());
  }

  uint16_t port() const { return server_->port(); }
  const std::string& login(size_t client) const { return logins_[client % kTokens]; }
  const std::string& cancelling() const { return cancelling_; }

 private:
  std::vector<std::string> arguments() const {
    return {"--port", "0", "--quotes", "still", "--data", folder_.path().string()};
  }

  std::string makeLogin(const std::string& name, const std::string& rights) const {
    boost::process::ipstream output;
    boost::process::child child(
        program_.string(),
        boost::process::args({"token", "add", name, "--rights", rights, "--data", folder_.path().string()}),
        boost::process::std_out > output);
    std::string token;
    std::getline(output, token);
    child.wait();
    if (child.exit_code() != 0) throw std::runtime_error(program_.string() + " makes no token");
    return fmt::format(R"({{"topic":"login","token":"{}"}})", token);
  }

  std::filesystem::path program_;
  test::TempDir folder_;
  std::vector<std::string> logins_;
  std::string cancelling_;
  std::unique_ptr<Server> server_;
};

// Places keyed orders, always so many at a time, until the time is over.
class Trader {
 public:
  Trader(asio::io_context& io, const Subject& subject, size_t number, double end)
      : ws_(io), end_(end), name_(fmt::format("c{}-", number)) {
    connect(ws_, subject.port(), subject.login(number));
    write();
    read();
  }

  size_t placed() const { return placed_; }

 private:
  void write() {
    if (isWriting_ || unsent_ == 0) return;
    isWriting_ = true;
    --unsent_;
    ++underWay_;
    ++number_;
    frame_ = fmt::format(R"({{"id":{0},"topic":"order.new","key":"{1}{0}","data":{{"orderList":[{2}]}}}})", number_,
                         name_, orderText(number_));
    ws_.async_write(asio::buffer(frame_), [this](const error_code& error, size_t /*bytes*/) {
      require(error);
      isWriting_ = false;
      write();
    });
  }

  void read() {
    ws_.async_read(buffer_, [this](const error_code& error, size_t /*bytes*/) {
      require(error);
      onMessage(beast::buffers_to_string(buffer_.cdata()));
    });
  }

  void onMessage(const std::string& message) {
    buffer_.clear();
    if (message.find(R"("id":)") != std::string::npos) {  // others are pushes
      requireSuccess(message);
      --underWay_;
      if (wallTime() < end_) {
        ++placed_;
        ++unsent_;
        write();
      }
    }
    if (underWay_ + unsent_ > 0) read();
  }

  Socket ws_;
  beast::flat_buffer buffer_;
  double end_;
  std::string name_;
  std::string frame_;
  size_t number_ = 0;
  size_t unsent_ = kUnderWay;
  size_t underWay_ = 0;
  size_t placed_ = 0;
  bool isWriting_ = false;
};

struct Result {
  double ordersPerSecond = 0;
  double cancelMedian = 0;  // nanoseconds
  double cancelSlowest = 0;
  double thousandInOneFrame = 0;
};

// One client that waits for each answer.
class Asker {
 public:
  Asker(const Subject& subject, const std::string& login) : ws_(io_) { connect(ws_, subject.port(), login); }

  std::string ask(std::string_view topic, const std::string& body) {
    ws_.write(asio::buffer(fmt::format(R"({{"id":1,"topic":"{}","data":{}}})", topic, body)));
    std::string message;
    while (message.find(R"("id":)") == std::string::npos) {  // until then they are pushes
      beast::flat_buffer buffer;
      ws_.read(buffer);
      message = beast::buffers_to_string(buffer.cdata());
    }
    requireSuccess(message);
    return message;
  }

 private:
  asio::io_context io_{1};
  Socket ws_;
};

std::string thousandOrders() {
  std::string list = orderText(1);
  for (size_t number = 2; number <= 1000; ++number) list += ',' + orderText(number);
  return fmt::format(R"({{"orderList":[{}]}})", list);
}

// Ids of orders that can be cancelled.
std::vector<std::string> workingOrders(Asker& asker) {
  const std::string list = asker.ask("order.list", "[1]");
  const std::regex id(R"re("localOrderId":"([0-9]+)")re");
  std::vector<std::string> ids;
  for (std::sregex_iterator each(list.begin(), list.end(), id), end; each != end; ++each) ids.push_back((*each)[1]);
  return ids;
}

// Cancels one order after the other; returns the nanoseconds that each took, in order of size.
std::vector<double> cancel(Asker& asker, const std::vector<std::string>& orders, double end) {
  std::vector<double> times;
  for (const std::string& order : orders) {
    const double begin = wallTime();
    if (begin > end) break;
    asker.ask("order.cancel", fmt::format(R"([{{"index":1,"localOrderId":"{}","hashCode":1000001}}])", order));
    times.push_back(wallTime() - begin);
    std::this_thread::sleep_for(kCancelPeriod);
  }
  std::sort(times.begin(), times.end());
  return times;
}

Result measure(const std::filesystem::path& program) {
  const Subject subject(program);
  Asker asker(subject, subject.cancelling());
  const double frameBegin = wallTime();
  asker.ask("order.new", thousandOrders());
  Result result;
  result.thousandInOneFrame = wallTime() - frameBegin;
  std::vector<std::string> orders = workingOrders(asker);
  orders.erase(orders.begin(), orders.end() - 500);  // the sample's own come first

  asio::io_context io{1};
  const double end = wallTime() + kSeconds * 1e9;
  std::vector<std::unique_ptr<Trader>> traders;
  while (traders.size() < kClients) traders.push_back(std::make_unique<Trader>(io, subject, traders.size(), end));
  std::vector<double> times;
  {
    const std::jthread canceller([&] { times = cancel(asker, orders, end); });
    io.run();
  }
  for (const auto& trader : traders) result.ordersPerSecond += static_cast<double>(trader->placed()) / kSeconds;
  result.cancelMedian = times.at(times.size() / 2);
  result.cancelSlowest = times.back();
  return result;
}

void setFlush(const char* milliseconds) {
  setenv("SLOW_FLUSH_MS", milliseconds, 1);
  setenv("LD_PRELOAD", FAULTY_FILES_LIBRARY, 1);
}

int run(const std::vector<std::string>& programs) {
  fmt::print(
      "{} clients, each with {} keyed orders under way, and one more that cancels.\n\n"
      "| Program | Added to a flush | Orders/s | A cancel: median | slowest | 1000 orders in one frame |\n"
      "|---|---|---|---|---|---|\n",
      kClients, kUnderWay);
  for (const char* delay : {"0", "10"}) {
    setFlush(delay);
    for (const std::string& program : programs) {
      const Result result = measure(program);
      fmt::print("| {} | {} ms | {:.0f} | {:.1f} ms | {:.1f} ms | {:.3f} s |\n", program, delay, result.ordersPerSecond,
                 result.cancelMedian / 1e6, result.cancelSlowest / 1e6, result.thousandInOneFrame / 1e9);
    }
  }
  return EXIT_SUCCESS;
}

}  // namespace
}  // namespace orvane::bench

int main(int argc, char** argv) try {
  if (argc < 2) throw std::runtime_error("usage: order-load PROGRAM...");
  return orvane::bench::run({argv + 1, argv + argc});
} catch (const std::exception& error) {
  fmt::print(stderr, "order-load: {}\n", error.what());
  return EXIT_FAILURE;
}
