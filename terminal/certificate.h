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

// The files of the terminal's own certificate and key: `tls.crt` and `tls.key` in the data folder.
TlsFiles ownTlsFiles(const std::filesystem::path& dataDir);

// Makes the terminal's own certificate, self-signed and valid for 825 days, for `address`, this machine's name and
// localhost, and its key with mode 0600. An existing one is kept if it was made for `address` and is valid for another
// month. `address` is an IP address; a wildcard address means all addresses that the machine has now. Throws
// std::runtime_error if the files cannot be written, or the old ones cannot be read.
void keepOwnCertificate(const TlsFiles& files, const std::string& address);

// The same for the server `name` of a cluster, which `host`, a name or an IP address, leads to. It is a client of the
// others too.
void keepPeerCertificate(const TlsFiles& files, const std::string& name, const std::string& host);

}  // namespace orvane::terminal
