#include "terminal/relay/credentials.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>

#include <fmt/format.h>
#include <sys/stat.h>

#include "terminal/relay/subjects.h"

namespace orvane::terminal::relay {
namespace {

constexpr std::string_view kFirstLine = "# Credentials for the cluster. Keep this file private.\n";
constexpr std::string_view kNameLine = "name: ";
constexpr std::string_view kSeedLine = "seed: ";
constexpr std::string_view kPageLine = "page: ";

[[noreturn]] void fail(const std::filesystem::path& file, std::string_view why) {
  throw std::runtime_error(fmt::format("cannot use the credentials {}: {}", file.string(), why));
}

// The value of the line that begins with `key`; empty without one.
std::string_view valueOf(std::string_view text, std::string_view key) {
  const size_t at = text.starts_with(key) ? 0 : text.find("\n" + std::string(key));
  if (at == std::string_view::npos) return {};
  const size_t begin = text.find(key, at) + key.size();
  return text.substr(begin, text.find('\n', begin) - begin);
}

}  // namespace

std::string writeCredentials(const Credentials& credentials) {
  return fmt::format("{}{}{}\n{}{}\n{}{}\n{}", kFirstLine, kNameLine, credentials.name, kSeedLine,
                     credentials.key.seed(), kPageLine, credentials.page, credentials.authority);
}

Credentials readCredentials(const std::filesystem::path& file) {
  struct stat status {};
  if (stat(file.c_str(), &status) != 0) fail(file, std::strerror(errno));
  if ((status.st_mode & (S_IWGRP | S_IRWXO)) != 0) {
    fail(file, fmt::format("others may read it; chmod 600 {}", file.string()));
  }
  std::ifstream stream(file, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(stream), {}};
  if (stream.bad() || !stream.is_open()) fail(file, std::strerror(errno));
  const std::string_view name = valueOf(text, kNameLine);
  if (!isName(name)) fail(file, fmt::format("its line \"name:\" must be {}", kNameRule));
  const std::string page(valueOf(text, kPageLine));
  if (!page.starts_with("http://") && !page.starts_with("https://")) {
    fail(file, "its line \"page:\" must be the address that phones open, such as https://relay.example");
  }
  const size_t authority = text.find("-----BEGIN CERTIFICATE-----");
  try {
    return {std::string(name), NKey::read(valueOf(text, kSeedLine)), page,
            authority == std::string::npos ? std::string() : text.substr(authority), file};
  } catch (const std::runtime_error& error) {
    fail(file, error.what());
  }
}

}  // namespace orvane::terminal::relay
