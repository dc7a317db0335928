#pragma once

#include <string_view>

#include "terminal/pages.h"

namespace orvane::terminal {

// The pages that never change: the web page and its files, and the errors. `path` comes without its query.
Page findWebPage(std::string_view method, std::string_view path);

}  // namespace orvane::terminal
