#pragma once

#include <filesystem>
#include <string>

#include "terminal/relay/nkey.h"

namespace orvane::terminal::relay {

// What a terminal or a relay needs to use the cluster: one text file.
struct Credentials {
  std::string name;  // of the terminal or relay that they are for
  NKey key;
  std::string page;              // the address that phones open, such as "https://relay.example"
  std::string authority;         // the servers' certificates, PEM; empty if they have no TLS
  std::filesystem::path file{};  // that they were read from
};

std::string writeCredentials(const Credentials& credentials);

// Throws std::runtime_error that names the file, what is wrong with it and what to do, also if all users can read it.
// The group may: systemd passes credentials on that way.
Credentials readCredentials(const std::filesystem::path& file);

}  // namespace orvane::terminal::relay
