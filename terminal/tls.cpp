#include "terminal/tls.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

#include <fmt/format.h>
#include <openssl/x509v3.h>
#include <unistd.h>

#include "terminal/certificate.h"

namespace orvane::terminal {
namespace {

namespace ssl = boost::asio::ssl;

constexpr const char* kCertificate = "certificate";
constexpr const char* kKey = "key";

// TLS 1.3 has no others. The key exchange is ephemeral, so that a stolen key opens no recording.
constexpr const char* kAeadSuites = "ECDHE+AESGCM:ECDHE+CHACHA20";

std::shared_ptr<ssl::context> makeContext(ssl::context::method method) {
  auto context = std::make_shared<ssl::context>(method);
  SSL_CTX_set_min_proto_version(context->native_handle(), TLS1_2_VERSION);
  if (SSL_CTX_set_cipher_list(context->native_handle(), kAeadSuites) != 1) {
    throw std::runtime_error("this OpenSSL has no AEAD suites for TLS 1.2");
  }
  SSL_CTX_set_options(context->native_handle(), SSL_OP_NO_RENEGOTIATION);
  return context;
}

[[noreturn]] void fail(const char* what, const std::filesystem::path& file, const std::string& reason) {
  throw std::runtime_error(fmt::format("cannot use the {} {}: {}", what, file.string(), reason));
}

void requireReadable(const char* what, const std::filesystem::path& file) {
  if (access(file.c_str(), R_OK) != 0) fail(what, file, std::strerror(errno));
}

}  // namespace

std::shared_ptr<ssl::context> makeServerTls(const TlsFiles& files) {
  auto context = makeContext(ssl::context::tls_server);
  boost::system::error_code error;
  requireReadable(kCertificate, files.certificate);
  context->use_certificate_chain_file(files.certificate.string(), error);
  if (error) fail(kCertificate, files.certificate, fmt::format("it must be a PEM certificate ({})", error.message()));
  requireReadable(kKey, files.key);
  context->use_private_key_file(files.key.string(), ssl::context::pem, error);
  if (error) {
    fail(kKey, files.key,
         fmt::format("it must be the PEM key of the certificate, without a passphrase ({})", error.message()));
  }
  return context;
}

std::shared_ptr<ssl::context> makeClientTls(const std::filesystem::path& certificate) {
  auto context = makeContext(ssl::context::tls_client);
  context->set_verify_mode(ssl::verify_peer);
  context->set_verify_callback([wanted = readCertificate(certificate)](bool /*trusted*/, ssl::verify_context& chain) {
    const bool isServers = X509_STORE_CTX_get_error_depth(chain.native_handle()) == 0;
    return !isServers || X509_cmp(X509_STORE_CTX_get_current_cert(chain.native_handle()), wanted.get()) == 0;
  });
  return context;
}

bool isCertified(ssl::context& server, const std::string& name) {
  return X509_check_host(SSL_CTX_get0_certificate(server.native_handle()), name.data(), name.size(), 0, nullptr) == 1;
}

}  // namespace orvane::terminal
