#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <openssl/x509.h>

#include "terminal/tls.h"

namespace orvane::terminal {

// The first certificate of a PEM file. Throws std::runtime_error that names the file.
std::shared_ptr<X509> readCertificate(const std::filesystem::path& file);

// Its SHA-256, as browsers show it: "AB:CD:…".
std::string fingerprint(const std::filesystem::path& certificate);

// Where the terminal's own certificate and key stand: `tls.crt` and `tls.key` of the data folder.
TlsFiles ownTlsFiles(const std::filesystem::path& dataDir);

// Makes the terminal's own certificate, signed by itself and good for 825 days, and its key that the owner alone can
// read, for `address`, this machine's name and localhost. One that is there, was made for `address` and is good for a
// month yet is kept. `address` is an IP address; one that stands for all brings in those the machine has now. Throws
// std::runtime_error where the files cannot be written or the old ones not be read.
void keepOwnCertificate(const TlsFiles& files, const std::string& address);

}  // namespace orvane::terminal
