#include "terminal/certificate.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <stdexcept>
#include <string_view>

#include <fcntl.h>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>
#include <unistd.h>

#include "terminal/privatefile.h"

namespace orvane::terminal {
namespace {

constexpr long kDay = 86400;
constexpr long kGoodFor = 825 * kDay;  // phones reject certificates that are valid for longer
constexpr long kRenewBefore = 30 * kDay;

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using Text = std::unique_ptr<BIO, decltype(&BIO_free)>;
using Extension = std::unique_ptr<X509_EXTENSION, decltype(&X509_EXTENSION_free)>;

void require(bool done) {
  if (!done) throw std::runtime_error("cannot make a certificate: OpenSSL failed");
}

Text openText(const std::filesystem::path& file) { return {BIO_new_file(file.c_str(), "r"), BIO_free}; }

bool isWildcard(const std::string& address) { return address == "0.0.0.0" || address == "::"; }

std::string hostName() {
  std::array<char, 256> name{};
  return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

// Addresses of the interfaces that are up, loopback included.
std::vector<std::string> machineAddresses() {
  ifaddrs* first = nullptr;
  if (getifaddrs(&first) != 0) {
    throw std::runtime_error(
        fmt::format("cannot ask for the machine's addresses, which its certificate needs: {}", std::strerror(errno)));
  }
  const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> owner(first, freeifaddrs);
  std::vector<std::string> addresses;
  for (const ifaddrs* each = first; each != nullptr; each = each->ifa_next) {
    const int family = each->ifa_addr == nullptr ? AF_UNSPEC : each->ifa_addr->sa_family;
    if ((family != AF_INET && family != AF_INET6) || (each->ifa_flags & IFF_UP) == 0) continue;
    std::array<char, NI_MAXHOST> text{};
    const socklen_t size = family == AF_INET ? sizeof(sockaddr_in) : sizeof(sockaddr_in6);
    if (getnameinfo(each->ifa_addr, size, text.data(), text.size(), nullptr, 0, NI_NUMERICHOST) != 0) continue;
    if (std::strchr(text.data(), '%') == nullptr) addresses.emplace_back(text.data());
  }
  return addresses;
}

// In the form of OpenSSL's configuration.
std::string alternativeNames(const std::string& address) {
  std::vector<std::string> names{"DNS:localhost"};
  if (const std::string host = hostName(); !host.empty() && host != "localhost") names.push_back("DNS:" + host);
  const auto addresses = isWildcard(address) ? machineAddresses() : std::vector<std::string>{address};
  for (const std::string& each : addresses) names.push_back("IP:" + each);
  return fmt::format("{}", fmt::join(names, ","));
}

void addExtension(X509& certificate, int kind, const std::string& value) {
  X509V3_CTX context{};
  X509V3_set_ctx(&context, &certificate, &certificate, nullptr, nullptr, 0);
  const Extension extension(X509V3_EXT_conf_nid(nullptr, &context, kind, value.c_str()), X509_EXTENSION_free);
  require(extension != nullptr && X509_add_ext(&certificate, extension.get(), -1) == 1);
}

void setSerial(X509& certificate) {
  uint64_t serial = 0;
  require(RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof serial) == 1);
  require(ASN1_INTEGER_set_uint64(X509_get_serialNumber(&certificate), serial >> 1U) == 1);
}

void setNames(X509& certificate, const std::string& subject) {
  X509_NAME* name = X509_get_subject_name(&certificate);
  const auto* text = reinterpret_cast<const unsigned char*>(subject.c_str());
  require(X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8, text, -1, -1, 0) == 1);
  require(X509_set_issuer_name(&certificate, name) == 1);
}

// What a certificate is for, in the form of OpenSSL's configuration.
struct Purpose {
  std::string subject;  // OpenSSL finds a trusted certificate by it, so no two in a list may have the same
  std::string names;
  std::string usage;
};

std::shared_ptr<X509> makeCertificate(EVP_PKEY& key, const Purpose& purpose) {
  std::shared_ptr<X509> made(X509_new(), X509_free);
  require(made != nullptr && X509_set_version(made.get(), X509_VERSION_3) == 1);
  setSerial(*made);
  setNames(*made, purpose.subject);
  require(X509_gmtime_adj(X509_getm_notBefore(made.get()), -kDay) != nullptr);  // a phone's clock may be behind
  require(X509_gmtime_adj(X509_getm_notAfter(made.get()), kGoodFor - kDay) != nullptr);
  require(X509_set_pubkey(made.get(), &key) == 1);
  addExtension(*made, NID_basic_constraints, "critical,CA:FALSE");
  addExtension(*made, NID_key_usage, "critical,digitalSignature");
  addExtension(*made, NID_ext_key_usage, purpose.usage);
  addExtension(*made, NID_subject_alt_name, purpose.names);
  require(X509_sign(made.get(), &key, EVP_sha256()) != 0);
  return made;
}

std::string_view bytesOf(BIO& text) {
  char* bytes = nullptr;
  const auto size = static_cast<size_t>(BIO_get_mem_data(&text, &bytes));
  return {bytes, size};
}

// Whether key and certificate match and stay valid for another month.
bool areUsable(const TlsFiles& files) {
  if (!std::filesystem::exists(files.certificate) || !std::filesystem::exists(files.key)) return false;
  const auto certificate = readCertificate(files.certificate);
  const Text text = openText(files.key);
  const Key key(text ? PEM_read_bio_PrivateKey(text.get(), nullptr, nullptr, nullptr) : nullptr, EVP_PKEY_free);
  std::time_t soon = std::time(nullptr) + kRenewBefore;
  return key != nullptr && X509_check_private_key(certificate.get(), key.get()) == 1 &&
         X509_cmp_time(X509_get0_notAfter(certificate.get()), &soon) > 0;
}

bool isFor(const TlsFiles& files, const std::string& host) {
  const auto certificate = readCertificate(files.certificate);
  return X509_check_ip_asc(certificate.get(), host.c_str(), 0) == 1 ||
         X509_check_host(certificate.get(), host.data(), host.size(), 0, nullptr) == 1;
}

bool isIpAddress(const std::string& host) {
  const std::unique_ptr<ASN1_OCTET_STRING, decltype(&ASN1_OCTET_STRING_free)> address(a2i_IPADDRESS(host.c_str()),
                                                                                      ASN1_OCTET_STRING_free);
  return address != nullptr;
}

void makeFiles(const TlsFiles& files, const Purpose& purpose) {
  const Key key(EVP_EC_gen("P-256"), EVP_PKEY_free);
  require(key != nullptr);
  const auto certificate = makeCertificate(*key, purpose);
  const Text keyText(BIO_new(BIO_s_mem()), BIO_free);
  const Text text(BIO_new(BIO_s_mem()), BIO_free);
  require(PEM_write_bio_PKCS8PrivateKey(keyText.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr) == 1);
  require(PEM_write_bio_X509(text.get(), certificate.get()) == 1);
  savePrivately(files.key, bytesOf(*keyText));
  savePrivately(files.certificate, bytesOf(*text));
}

}  // namespace

std::shared_ptr<X509> readCertificate(const std::filesystem::path& file) {
  const Text text = openText(file);
  const std::string reason = text ? "it must be a PEM file" : std::strerror(errno);
  std::shared_ptr<X509> certificate(text ? PEM_read_bio_X509(text.get(), nullptr, nullptr, nullptr) : nullptr,
                                    X509_free);
  if (certificate == nullptr) {
    throw std::runtime_error(fmt::format("cannot read a certificate from {}: {}", file.string(), reason));
  }
  return certificate;
}

std::string fingerprint(const std::filesystem::path& certificate) {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned size = 0;
  require(X509_digest(readCertificate(certificate).get(), EVP_sha256(), digest.data(), &size) == 1);
  return fmt::format("{:02X}", fmt::join(digest.begin(), digest.begin() + size, ":"));
}

TlsFiles ownTlsFiles(const std::filesystem::path& dataDir) { return {dataDir / "tls.crt", dataDir / "tls.key"}; }

void keepOwnCertificate(const TlsFiles& files, const std::string& address) {
  if (areUsable(files) && (isWildcard(address) || isFor(files, address))) return;
  makeFiles(files, {"pocket-terminal", alternativeNames(address), "serverAuth"});
}

void keepPeerCertificate(const TlsFiles& files, const std::string& name, const std::string& host) {
  if (areUsable(files) && isFor(files, host)) return;
  makeFiles(files, {name, (isIpAddress(host) ? "IP:" : "DNS:") + host, "serverAuth,clientAuth"});
}

}  // namespace orvane::terminal
