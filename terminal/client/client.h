#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace orvane::terminal {

// The gateway cannot be reached, does not answer in time, or closed the connection. The text is UTF-8.
class ClientError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// One message of the gateway, taken apart. UTF-8.
struct Reply {
  std::string id;  // JSON text; empty for a push
  std::string topic;
  std::string message;  // why it failed; empty on success
  std::string data;     // JSON text as it came; "null" where there is none
  std::string text;     // stands in for data that is no JSON
  std::string seq;      // of a push; empty for a reply
};

// How to reach a gateway.
struct ClientOptions {
  std::string address = "127.0.0.1";                             // an IP address
  std::filesystem::path certificate;                             // the gateway's own; empty without TLS
  std::chrono::milliseconds patience{std::chrono::seconds(10)};  // no call waits longer for anything
};

// A phone, as the gateway sees it: one connection, used by one thread, each call waiting for its end.
class Client {
 public:
  // Throws ClientError where the gateway cannot be reached or is not the one that holds the certificate, and
  // std::runtime_error where the certificate cannot be read.
  explicit Client(uint16_t port, const ClientOptions& options = {});
  virtual ~Client();
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  // Throws ClientError with the gateway's own text when it is refused.
  void login(const std::string& token);

  // Sends one request and waits for its reply; `data` is JSON text, or empty. What comes in between is kept.
  Reply request(std::string_view topic, std::string_view data = {}, int32_t terminalType = 8);

  // The first push of this topic that no call has returned yet.
  Reply waitPush(std::string_view topic);

  // One frame as it stands, text or binary, and the next message that was not returned yet.
  void send(std::string_view frame, bool asText = true);
  Reply receive();

  // Waits for the gateway to close the connection, passing over what comes before. Returns the close code; 0 where the
  // connection ended without one.
  uint16_t waitClose();

 protected:
  // Sees each message as it comes, before any call returns it.
  virtual void onMessage(std::string_view /*text*/) {}

 private:
  struct Connection;

  Reply read();
  template <typename Wanted>
  Reply take(Wanted wanted);

  std::unique_ptr<Connection> connection_;
  std::deque<Reply> kept_;
  int64_t lastId_ = 0;
};

}  // namespace orvane::terminal
