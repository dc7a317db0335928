#pragma once

#include <filesystem>
#include <string_view>

namespace orvane::terminal {

// Writes a file that its owner alone can read. Writes it under another name first and then renames it, so that a
// program that is killed leaves no partial file. Throws std::runtime_error.
void savePrivately(const std::filesystem::path& file, std::string_view bytes);

}  // namespace orvane::terminal
