#pragma once

#include <string>
#include <vector>

namespace bench {

// The files of the agent images in a plug-in that are stand-ins, by what stands in it: text that
// a real receiver would be asked to run. Empty: it carries others, or cannot be read.
std::vector<std::string> standInsOf(const std::string &plugin);

} // namespace bench
