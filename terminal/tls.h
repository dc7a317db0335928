#pragma once

#include <boost/asio/ssl/context.hpp>
#include <filesystem>
#include <memory>
#include <string>

namespace orvane::terminal {

// A certificate, with its chain if it has one, and its private key, as PEM.
struct TlsFiles {
  std::filesystem::path certificate;
  std::filesystem::path key;
};

// TLS 1.2 and up, AEAD suites only, with these files. Throws std::runtime_error that names the invalid file.
std::shared_ptr<boost::asio::ssl::context> makeServerTls(const TlsFiles& files);

// TLS 1.2 and up, AEAD suites only. Trusts only the first certificate of the file, whatever its names and its issuer.
// Throws as makeServerTls does.
std::shared_ptr<boost::asio::ssl::context> makeClientTls(const std::filesystem::path& certificate);

// Whether a browser would accept the context's certificate for this name.
bool isCertified(boost::asio::ssl::context& server, const std::string& name);

}  // namespace orvane::terminal
