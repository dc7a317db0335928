#include "terminal/client/call.h"

#include <cstdio>

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "terminal/client/client.h"
#include "terminal/client/table.h"
#include "terminal/ownersfile.h"
#include "terminal/tokens.h"

namespace orvane::terminal {
namespace {

enum ExitCode { kDone = 0, kRefused = 1, kNotAsked = 2 };

// 0 if the output is not a screen.
size_t screenWidth() {
  winsize size{};
  return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

void printReply(const Reply& reply, bool asTable) {
  const std::string& text = reply.text.empty() ? reply.data : reply.text;
  fmt::print("{}", asTable ? writeTable(text, screenWidth()) : text + '\n');
}

// A terminal that listens on a wildcard address is reached on loopback.
ClientOptions optionsOf(const CallSettings& call) {
  ClientOptions options;
  options.address = call.address == "0.0.0.0" ? "127.0.0.1" : call.address == "::" ? "::1" : call.address;
  if (call.tls) options.certificate = call.tls->certificate;
  return options;
}

Client connect(const CallSettings& call) try {
  return Client(call.port, optionsOf(call));
} catch (const ClientError& error) {
  throw ClientError(fmt::format(
      "{}\nIs the terminal running, and are --listen, --port and --tls-... those it was started with?", error.what()));
}

void login(Client& client, const OwnToken& own) {
  try {
    client.login(own.text());
  } catch (const ClientError& error) {
    throw ClientError(fmt::format("{}\nIs --data the folder of that terminal?", error.what()));
  }
}

}  // namespace

int runCall(const CallSettings& call) try {
  actAsOwner(call.dataDir);
  std::optional<OwnToken> own;
  if (call.token.empty()) own.emplace(call.dataDir);
  Client client = connect(call);
  own ? login(client, *own) : client.login(call.token);
  const Reply reply = client.request(call.topic, call.data, call.terminalType);
  if (reply.message.empty()) {
    printReply(reply, call.asTable);
    return kDone;
  }
  std::fputs((escapeControls(reply.message) + '\n').c_str(), stderr);
  return kRefused;
} catch (const std::exception& error) {
  std::fputs(fmt::format("pocket-terminal: {}\n", error.what()).c_str(), stderr);
  return kNotAsked;
}

}  // namespace orvane::terminal
