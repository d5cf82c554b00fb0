// The libraries behind the pixel code, by name and version, for bug reports.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace kvn::imaging {

std::vector<std::pair<std::string, std::string>> libraryVersions();

} // namespace kvn::imaging
