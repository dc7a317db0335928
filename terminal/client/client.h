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

// One message of the gateway. UTF-8.
struct Reply {
  std::string id;  // JSON text; empty for a push
  std::string topic;
  std::string message;  // why it failed; empty on success
  std::string data;     // JSON text as received; "null" if there is none
  std::string text;     // replaces data that is not JSON
  std::string seq;      // of a push; empty for a reply
};

// How to reach a gateway.
struct ClientOptions {
  std::string address = "127.0.0.1";                             // an IP address
  std::filesystem::path certificate;                             // the gateway's own; empty without TLS
  std::chrono::milliseconds patience{std::chrono::seconds(10)};  // time limit of every wait
};

// A client of the gateway: one connection, used by one thread. Each call blocks until it is done.
class Client {
 public:
  // Throws ClientError if the gateway cannot be reached or does not have the certificate, and std::runtime_error if
  // the certificate cannot be read.
  explicit Client(uint16_t port, const ClientOptions& options = {});
  virtual ~Client();
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  // Throws ClientError with the gateway's own text if it is refused.
  void login(const std::string& token);

  // Sends one request and waits for its reply; `data` is JSON text, or empty. Other messages are kept.
  Reply request(std::string_view topic, std::string_view data = {}, int32_t terminalType = 8);

  // The first push of this topic that no call has returned yet.
  Reply waitPush(std::string_view topic);

  // Sends one frame, text or binary, unchanged, and returns the next message that no call has returned yet.
  void send(std::string_view frame, bool asText = true);
  Reply receive();

  // Waits for the gateway to close the connection and ignores messages until then. Returns the close code; 0 if the
  // connection ended without one.
  uint16_t waitClose();

 protected:
  // Called with each received message before any call returns it.
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
