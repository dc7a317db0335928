#pragma once

#include <optional>
#include <string_view>

#include "terminal/pages.h"

namespace orvane::terminal {

// A file of the web page, compressed if the client takes that; 304 if the client has it. Empty if there is none.
std::optional<Page> findFile(const HttpRequest& request);

// What is answered if there is no page. `path` comes without its query.
Page missingPage(std::string_view method, std::string_view path);

}  // namespace orvane::terminal
