#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/websocket.hpp>
#include <thread>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "tests/system/socketbytes.h"
#include "tests/system/terminalprocess.h"

namespace orvane::test {
namespace {

namespace beast = boost::beast;
namespace websocket = beast::websocket;
using boost::asio::ip::tcp;

// A phone that offers compression, and counts the bytes that reach its socket.
class Phone {
 public:
  explicit Phone(const TerminalProcess& terminal, int windowBits = 15) : ws_(context_) {
    ws_.next_layer().connect({boost::asio::ip::address_v4::loopback(), terminal.port()});
    websocket::permessage_deflate offer;
    offer.client_enable = true;
    offer.client_max_window_bits = windowBits;
    ws_.set_option(offer);
    ws_.handshake("127.0.0.1", "/ws");
    ask("login", R"("token":")" + terminal.token() + '"');
  }

  // The reply to a request with these members.
  std::string ask(const std::string& topic, const std::string& members = R"("data":[])") {
    send(fmt::format(R"({{"topic":"{}",{}}})", topic, members));
    return read();
  }

  void send(const std::string& text) { ws_.write(boost::asio::buffer(text)); }

  std::string read() {
    beast::flat_buffer buffer;
    boost::system::error_code ended;
    ws_.read(buffer, ended);
    return ended ? "" : beast::buffers_to_string(buffer.data());
  }

  // What a list takes at the socket; it is to be `expected`.
  uint64_t cost(const std::string& expected) {
    const uint64_t before = received();
    EXPECT_EQ(ask("position.list"), expected);
    return received() - before;
  }

  uint16_t closeCode() const { return ws_.reason().code; }

 private:
  uint64_t received() { return receivedBytes(ws_.next_layer().native_handle()); }

  boost::asio::io_context context_;
  websocket::stream<tcp::socket> ws_;
};

TEST(Compression, LongListTakesLittleOnceItsLikeWasSentAndTheMemoryIsGivenUpWithoutMore) {
  const FreshTerminal terminal({"--idle-timeout", "1"});
  Phone phone(terminal);
  const std::string list = phone.ask("position.list");
  EXPECT_GT(list.size(), 20'000U);
  EXPECT_LT(phone.cost(list), 1000U);
  const auto idle = std::chrono::steady_clock::now() + std::chrono::seconds(5);  // more than four idle times
  while (std::chrono::steady_clock::now() < idle) {
    phone.ask("terminal.info");
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  const uint64_t anew = phone.cost(list);
  EXPECT_GT(anew, 2000U);
  EXPECT_LT(anew, 6000U);
  EXPECT_LT(phone.cost(list), 1000U);
}

TEST(Compression, KeepsWithinItsMemoryAndSendsPlainlyBeyond) {
  for (const auto& [limit, count] : {std::pair{"0", 0}, {"1", 4}}) {
    const FreshTerminal terminal({"--max-compression", limit});
    std::vector<std::unique_ptr<Phone>> phones;
    int compressed = 0;
    for (int i = 0; i < 6; ++i) phones.push_back(std::make_unique<Phone>(terminal, i % 2 == 0 ? 15 : 9));
    const std::string list = phones[0]->ask("position.list");
    for (const auto& phone : phones) compressed += phone->cost(list) < list.size() / 3 ? 1 : 0;
    EXPECT_EQ(compressed, count);
    phones.erase(phones.begin(), phones.begin() + 2);  // their memory is free again
    Phone next(terminal);
    EXPECT_EQ(next.cost(list) < list.size() / 3, count > 0);
  }
}

TEST(Compression, MessageThatIsTooLargeOnceInflatedIsRefused) {
  const FreshTerminal terminal;
  Phone phone(terminal);
  phone.send(R"({"topic":"terminal.info","data":")" + std::string(200'000, ' ') + R"("})");
  EXPECT_THAT(phone.read(), testing::HasSubstr("terminal.info"));
  phone.send(std::string(1'000'000, ' '));
  EXPECT_EQ(phone.read(), "");
  EXPECT_EQ(phone.closeCode(), 1009);
  EXPECT_THAT(Phone(terminal).ask("terminal.info"), testing::HasSubstr("still"));
}

}  // namespace
}  // namespace orvane::test
