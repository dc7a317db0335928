#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/ssl.hpp>
#include <boost/asio/write.hpp>
#include <stdexcept>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "terminal/certificate.h"
#include "tests/support/rawsocket.h"
#include "tests/system/terminalprocess.h"

namespace orvane::test {
namespace {

using terminal::Client;
using terminal::ClientError;
using testing::HasSubstr;
using testing::StartsWith;
using testing::ThrowsMessage;

TEST(Tls, WithTheTerminalsOwnCertificate) {
  FreshTerminal terminal({"--tls-self", "--login-timeout", "3"});
  const std::filesystem::path certificate = terminal.dir() / "tls.crt";
  const std::string fingerprint = terminal::fingerprint(certificate);
  struct stat key {};
  ASSERT_EQ(stat((terminal.dir() / "tls.key").c_str(), &key), 0);
  EXPECT_EQ(key.st_mode & 0777, 0600U);

  // Handshakes that are cut off, and bytes that are not TLS.
  const std::string hello("\x16\x03\x01\x02\x00\x01\x00\x01\xFC\x03\x03", 11);
  for (size_t size = 0; size < hello.size(); ++size) RawSocket(terminal.port()) << hello.substr(0, size);
  RawSocket silent(terminal.port());
  EXPECT_THAT(httpGet(terminal.port(), "/"), testing::Not(StartsWith("HTTP")));
  EXPECT_EQ((silent << hello).readToEnd(), "");

  Client phone(terminal.port(), {.certificate = certificate});
  phone.login(terminal.token());
  const size_t once = phone.request("monitor.list", "[1]").data.size();
  phone.send(fmt::format(R"({{"id":9,"topic":"monitor.list","data":[{}]}})", fmt::join(std::vector(1000, 1), ",")));
  for (int i = 0; i < 200; ++i) phone.send(R"({"id":10,"topic":"monitor.list","data":[1]})");
  EXPECT_THAT([&] { Client(terminal.port()); }, ThrowsMessage<ClientError>(StartsWith("cannot connect to 127.0.0.1:")));

  const auto call = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"call", "account.list", "--port", std::to_string(terminal.port())});
    return runTerminal(arguments);
  };
  EXPECT_THAT(call({"--data", terminal.dir().string(), "--tls-self"}).output, StartsWith("[{"));
  const TempDir other;
  terminal::keepOwnCertificate(terminal::ownTlsFiles(other.path()), "127.0.0.1");
  EXPECT_THAT(call({"--token", "x", "--tls-self", "--data", other.path().string()}).error,
              HasSubstr("no TLS with the certificate that was given: certificate verify failed"));
  EXPECT_THAT(call({"--token", "x", "--tls-cert", "/none"}).error, HasSubstr("cannot read a certificate from /none"));

  // Meanwhile the first list, which is longer than what a socket takes, waits with short ones behind it.
  EXPECT_EQ(phone.receive().data.size(), 1000 * (once - 1) + 1);
  for (int i = 0; i < 200; ++i) EXPECT_EQ(phone.receive().data.size(), once);

  ASSERT_EQ(terminal.stop(), 0);
  EXPECT_EQ(phone.waitClose(), 1001);
  TerminalProcess(terminal.dir(), {"--tls-self"}).stop();
  EXPECT_EQ(terminal::fingerprint(certificate), fingerprint);
  TerminalProcess(terminal.dir(), {"--tls-self", "--listen", "127.0.0.2"}).stop();
  EXPECT_NE(terminal::fingerprint(certificate), fingerprint);
}

// The page that a client of TLS 1.2 with this suite gets; empty if the handshake fails.
std::string pageBySuite(uint16_t port, const std::string& suite) {
  namespace asio = boost::asio;
  asio::ssl::context context(asio::ssl::context::tlsv12_client);
  if (SSL_CTX_set_cipher_list(context.native_handle(), suite.c_str()) != 1) throw std::runtime_error("no " + suite);
  asio::io_context io;
  asio::ssl::stream<asio::ip::tcp::socket> stream(io, context);
  stream.next_layer().connect({asio::ip::address_v4::loopback(), port});
  boost::system::error_code error;
  if (stream.handshake(asio::ssl::stream_base::client, error)) return {};
  asio::write(stream, asio::buffer(std::string("GET / HTTP/1.1\r\nHost: localhost\r\n\r\n")));
  std::string page;
  asio::read(stream, asio::dynamic_buffer(page), error);
  EXPECT_EQ(error, asio::error::eof) << "the end of the connection was not announced";
  return page;
}

TEST(Tls, TakesAeadSuitesOnly) {
  const FreshTerminal terminal({"--tls-self"});
  for (const char* suite : {"ECDHE-ECDSA-AES128-GCM-SHA256", "ECDHE-ECDSA-CHACHA20-POLY1305"}) {
    EXPECT_THAT(pageBySuite(terminal.port(), suite), HasSubstr("\r\nStrict-Transport-Security: max-age=31536000\r\n"));
  }
  for (const char* suite : {"ECDHE-ECDSA-AES128-SHA256", "ECDHE-ECDSA-AES256-SHA", "ECDHE-ECDSA-AES128-CCM8"}) {
    EXPECT_EQ(pageBySuite(terminal.port(), suite), "") << suite;
  }
}

}  // namespace
}  // namespace orvane::test
