#include "terminal/serversettings.h"

#include <CLI/CLI.hpp>
#include <boost/asio/ip/address.hpp>

#include "terminal/certificate.h"
#include "terminal/commandline.h"

namespace orvane::terminal {
namespace {

std::string checkAddress(const std::string& text) {
  boost::system::error_code error;
  boost::asio::ip::make_address(text, error);
  return error ? text + " is not an IP address" : "";
}

std::chrono::milliseconds milliseconds(double seconds) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
}

}  // namespace

std::string checkOrigin(const std::string& origin) {
  const size_t host = origin.starts_with("https://") ? 8 : origin.starts_with("http://") ? 7 : origin.size();
  const bool isOrigin = host < origin.size() && origin.find_first_of("/?#@ ", host) == std::string::npos;
  return isOrigin ? "" : origin + " is not an origin such as https://trade.example.com:8443";
}

void ServerOptions::add(CLI::App& app, const char* purpose) {
  addNetwork(app);
  addPhones(app);
  addFiles(app, purpose);
}

void ServerOptions::addNetwork(CLI::App& app) {
  app.option_defaults()->group("Network");
  app.add_option("--listen", settings_.address, "IP address to listen on; beyond loopback TLS is required")
      ->check(CLI::Validator(checkAddress, "ADDRESS"))
      ->capture_default_str();
  app.add_option("--port", settings_.port, "port; 0 is any free one")->capture_default_str();
  CLI::Option* own = app.add_flag("--tls-self", settings_.keepsOwnCertificate,
                                  "TLS with a self-signed certificate, made and kept in the data folder");
  CLI::Option* certificate =
      app.add_option("--tls-cert", tls_.certificate, "TLS with the certificate of this file (PEM)")->excludes(own);
  app.add_option("--tls-key", tls_.key, "the key of --tls-cert (PEM)")->needs(certificate);
  app.add_option("--allow-origin", settings_.allowedOrigins, "further origin whose pages may use the terminal")
      ->check(CLI::Validator(checkOrigin, "ORIGIN"));
}

void ServerOptions::addPhones(CLI::App& app) {
  app.option_defaults()->group("Phones");
  app.add_option("--login-timeout", loginSeconds_, "seconds within which a phone must log in")
      ->check(CLI::Validator(checkFinite, "SECONDS") & CLI::Range(0.01, 3600.0))
      ->capture_default_str();
  app.add_option("--idle-timeout", idleSeconds_,
                 "seconds after which a phone that is silent or reads nothing is dropped")
      ->check(CLI::Validator(checkFinite, "SECONDS") & CLI::Range(0.01, 3600.0))
      ->capture_default_str();
  app.add_option("--max-connections", settings_.maxConnections, "phones that are connected at once")
      ->check(CLI::Range(3, 1'000'000))
      ->capture_default_str();
  app.add_option("--max-backlog", maxBacklog_, "MiB of unsent messages, for all phones together")
      ->check(CLI::Range(1, 65536))
      ->capture_default_str();
  app.add_option("--max-compression", maxCompression_,
                 "MiB of memory for compressing messages, for all phones together; 0 compresses none")
      ->check(CLI::Range(0, 65536))
      ->capture_default_str();
}

void ServerOptions::addFiles(CLI::App& app, const char* purpose) {
  app.option_defaults()->group("Files");
  app.set_config("--config", defaultConfig(program_).string(),
                 "settings file; its keys are these options without the dashes")
      ->group("Files");
  app.allow_config_extras(CLI::config_extras_mode::error);
  app.add_option("--data", settings_.dataDir, purpose)->default_str(defaultDataDir(program_).string());
  app.add_option("--log", settings_.logFile, "log file")->default_str(log_ + " in the data folder");
  app.add_option("--log-level", settings_.logLevel, "lowest level that is logged")
      ->check(CLI::IsMember({"trace", "debug", "info", "warn", "error", "off"}))
      ->capture_default_str();
}

void ServerOptions::complete(bool needsKey) {
  if (settings_.dataDir.empty()) settings_.dataDir = defaultDataDir(program_);
  if (settings_.dataDir.empty()) throw CLI::ValidationError("--data", "name a folder: the environment has no HOME");
  if (settings_.logFile.empty()) settings_.logFile = settings_.dataDir / log_;
  settings_.loginTime = milliseconds(loginSeconds_);
  settings_.idleTime = milliseconds(idleSeconds_);
  settings_.maxBacklogBytes = maxBacklog_ * 1024 * 1024;
  settings_.maxCompressionBytes = maxCompression_ * 1024 * 1024;
  completeTls(needsKey);
}

void ServerOptions::completeTls(bool needsKey) {
  if (settings_.keepsOwnCertificate) settings_.tls = ownTlsFiles(settings_.dataDir);
  if (tls_.certificate.empty()) return;
  if (needsKey && tls_.key.empty()) throw CLI::ValidationError("--tls-cert", "its key is missing: add --tls-key");
  settings_.tls = tls_;
}

}  // namespace orvane::terminal
