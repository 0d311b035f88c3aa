#include "agents.h"

#include <fstream>
#include <iterator>

namespace bench {

namespace {

struct StandIn
{
    const char *file;
    const char *beginning; // of its text
};

constexpr StandIn kStandIns[] = {
    {"da_array.bin", "STAND-IN for the stage 1 download agent"},
    {"da_array1.bin", "STAND-IN for the stage 2 download agent"},
    {"slave_da_array.bin", "STAND-IN for the slave download agent"},
};

} // namespace

std::vector<std::string> standInsOf(const std::string &plugin)
{
    std::ifstream file(plugin, std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(file), {}};
    std::vector<std::string> found;
    for (const StandIn &standIn : kStandIns) {
        if (content.find(standIn.beginning) != std::string::npos)
            found.emplace_back(standIn.file);
    }
    return found;
}

} // namespace bench
