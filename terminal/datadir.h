#pragma once

#include <filesystem>

namespace orvane::terminal {

// Makes a missing data folder, for its owner alone. Throws std::runtime_error with a clear message.
void makeDataDir(const std::filesystem::path& dir);

// Throws std::runtime_error with a clear message if no file can be created in the data folder.
void requireWritable(const std::filesystem::path& dir);

}  // namespace orvane::terminal
