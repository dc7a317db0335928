#pragma once

#include <boost/asio/ssl/context.hpp>
#include <filesystem>
#include <memory>
#include <string>

namespace orvane::terminal {

// A certificate, the chain behind it where there is one, and its private key, as PEM.
struct TlsFiles {
  std::filesystem::path certificate;
  std::filesystem::path key;
};

// TLS 1.2 and up, with these files. Throws std::runtime_error that names the file at fault.
std::shared_ptr<boost::asio::ssl::context> makeServerTls(const TlsFiles& files);

// TLS 1.2 and up with a server that holds the very certificate that the file begins with, whatever name it was made for
// and whoever signed it. Throws as makeServerTls does.
std::shared_ptr<boost::asio::ssl::context> makeClientTls(const std::filesystem::path& certificate);

// Whether the context's certificate was made for this name, as a browser would see it.
bool isCertified(boost::asio::ssl::context& server, const std::string& name);

}  // namespace orvane::terminal
