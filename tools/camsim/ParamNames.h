#pragma once
#include <string>

// Readable names of the fisheye board's parameter ids and ISP commands, for
// the simulator's commands and listings.
namespace camsim {

// The name of a parameter id ("brightness"), or nullptr when the id has none.
const char* parameterName(int id);
// The id of a parameter name (exact, case-insensitive), or false.
bool parameterIdByName(const std::string& name, int& id);
// The name of an ISP driver command ("brightness", "picture day/night"), or "command N".
std::string ispCommandName(int command);

}  // namespace camsim
