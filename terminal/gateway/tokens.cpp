#include "terminal/gateway/tokens.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <stdexcept>

#include <fcntl.h>
#include <fmt/format.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvane::terminal {
namespace {

constexpr size_t kTokenBytes = 32;
constexpr size_t kTokenLength = 43;
constexpr std::string_view kBase64Url = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

std::filesystem::path tokenFile(const std::filesystem::path& dataDir) { return dataDir / "token"; }

std::string makeToken() {
  std::array<unsigned char, kTokenBytes> bytes{};
  if (RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) != 1) {
    throw std::runtime_error("cannot make a token: the system's random numbers are not available");
  }
  std::array<unsigned char, 4 * ((kTokenBytes + 2) / 3) + 1> text{};
  EVP_EncodeBlock(text.data(), bytes.data(), static_cast<int>(bytes.size()));
  std::string token(text.begin(), text.begin() + kTokenLength);
  for (char& c : token) c = c == '+' ? '-' : c == '/' ? '_' : c;
  return token;
}

struct Descriptor {
  explicit Descriptor(int opened) : number(opened) {}
  ~Descriptor() { close(number); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int number;
};

// Written beside its place and moved there whole: a start that dies half-way leaves no half token.
void saveToken(const std::filesystem::path& file, const std::string& token) {
  const std::filesystem::path fresh = file.string() + ".new";
  const Descriptor opened(open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, S_IRUSR | S_IWUSR));
  const std::string line = token + '\n';
  if (opened.number < 0 || write(opened.number, line.data(), line.size()) != static_cast<ssize_t>(line.size()) ||
      fsync(opened.number) != 0 || std::rename(fresh.c_str(), file.c_str()) != 0) {
    throw std::runtime_error(fmt::format("cannot write {}: {}", file.string(), std::strerror(errno)));
  }
}

void requirePrivate(const std::filesystem::path& file) {
  using std::filesystem::perms;
  const perms others = perms::group_all | perms::others_all;
  if ((std::filesystem::status(file).permissions() & others) != perms::none) {
    throw std::runtime_error(fmt::format(
        "{} can be read by other users: run 'chmod 600' on it, or delete it to get a new token", file.string()));
  }
}

}  // namespace

std::string loadToken(const std::filesystem::path& dataDir) {
  const std::filesystem::path file = tokenFile(dataDir);
  std::ifstream stream(file);
  if (!stream) {
    throw std::runtime_error(
        fmt::format("cannot read {}: start the terminal once, or say --data or --token", file.string()));
  }
  std::string token;
  std::getline(stream, token);
  if (token.size() != kTokenLength || token.find_first_not_of(kBase64Url) != std::string::npos) {
    throw std::runtime_error(fmt::format("{} holds no token: delete it to get a new one", file.string()));
  }
  requirePrivate(file);
  return token;
}

std::string loadOrMakeToken(const std::filesystem::path& dataDir) {
  if (!std::filesystem::exists(tokenFile(dataDir))) saveToken(tokenFile(dataDir), makeToken());
  return loadToken(dataDir);
}

bool sameToken(std::string_view token, std::string_view guess) {
  return token.size() == guess.size() && CRYPTO_memcmp(token.data(), guess.data(), token.size()) == 0;
}

}  // namespace orvane::terminal
