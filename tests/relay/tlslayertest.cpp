#include <array>
#include <boost/asio/io_context.hpp>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "terminal/certificate.h"
#include "terminal/tls.h"
#include "terminal/tlslayer.h"
#include "tests/support/tempdir.h"

namespace orvane::test {
namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;
using terminal::TlsLayer;

// Both ends of a connection on loopback, in the test's own thread.
class TlsLayers : public testing::Test {
 protected:
  TlsLayers() {
    tcp::acceptor acceptor(io_, {asio::ip::address_v4::loopback(), 0});
    near_.connect(acceptor.local_endpoint());
    acceptor.accept(far_);
    const terminal::TlsFiles files = terminal::ownTlsFiles(dir_.path());
    terminal::keepOwnCertificate(files, "127.0.0.1");
    serverTls_ = terminal::makeServerTls(files);
    clientTls_ = terminal::makeClientTls(files.certificate);
    server_.emplace(near_, *serverTls_);
    client_.emplace(far_, *clientTls_);
  }

  void shakeHands() {
    server_->handshake(asio::ssl::stream_base::server, [](error_code error, size_t) { EXPECT_FALSE(error); });
    client_->handshake(asio::ssl::stream_base::client, [](error_code error, size_t) { EXPECT_FALSE(error); });
    run();
  }

  void run() {
    io_.restart();
    io_.run_for(std::chrono::seconds(60));
    EXPECT_TRUE(io_.stopped());
  }

  // In two buffers, as Beast has the head and the text of a frame.
  void writeAll(std::string_view text) {
    if (text.empty()) return;
    const std::string_view head = text.substr(0, 10);
    const std::array<asio::const_buffer, 2> both{asio::buffer(head), asio::buffer(text.substr(head.size()))};
    server_->writeSome(both, [this, text](error_code error, size_t bytes) {
      ASSERT_FALSE(error);
      writeAll(text.substr(bytes));
    });
  }

  // Until the end, which is noted in `end_` and answered.
  void readAll() {
    client_->readSome(asio::buffer(buffer_), [this](error_code error, size_t bytes) {
      read_.append(buffer_.data(), bytes);
      if (!error) return readAll();
      end_ = error;
      client_->shutdown([](error_code /*error*/, size_t) {});
    });
  }

  TempDir dir_;
  asio::io_context io_;
  tcp::socket near_{io_};
  tcp::socket far_{io_};
  std::shared_ptr<asio::ssl::context> serverTls_;
  std::shared_ptr<asio::ssl::context> clientTls_;
  std::optional<TlsLayer> server_;
  std::optional<TlsLayer> client_;
  std::array<char, 5000> buffer_{};  // shorter than a record
  std::string read_;
  error_code end_;
};

TEST_F(TlsLayers, MoveMoreThanTheSocketTakesUntilTheAnnouncedEnd) {
  shakeHands();
  std::string text;
  while (text.size() < 8'000'000) text += std::to_string(text.size());
  near_.set_option(asio::socket_base::send_buffer_size(20'000));
  writeAll(text);
  io_.restart();
  io_.poll();  // the socket is full
  readAll();
  while (read_.size() < text.size() && io_.run_one_for(std::chrono::seconds(60)) > 0) continue;
  server_->shutdown([](error_code error, size_t) { EXPECT_FALSE(error); });
  run();
  EXPECT_TRUE(read_ == text);
  EXPECT_EQ(end_, asio::error::eof);
}

TEST_F(TlsLayers, ReportABreakThatIsNotAnnounced) {
  shakeHands();
  near_.close();
  readAll();
  run();
  EXPECT_EQ(end_, asio::ssl::error::stream_truncated);
}

TEST_F(TlsLayers, LetAHandshakeEndThatThePeerDoesNotAnswer) {
  std::optional<error_code> failure;
  server_->handshake(asio::ssl::stream_base::server, [&](error_code error, size_t) { failure = error; });
  io_.poll();
  EXPECT_FALSE(failure.has_value());
  near_.close();
  run();
  EXPECT_EQ(failure, error_code(asio::error::operation_aborted));
}

}  // namespace
}  // namespace orvane::test
