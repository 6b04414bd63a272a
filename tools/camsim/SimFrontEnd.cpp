#include "camsim/SimFrontEnd.h"

#include "camsim/FisheyeFrontEnd.h"

namespace camsim {

std::unique_ptr<SimFrontEnd> SimFrontEnd::forModule(const ModuleConfigure& module) {
    // The fisheye board is the one front end simulated so far; any other module
    // is handed the same hardware (the library brings up its do-nothing
    // controller for it and camsim says so).
    return std::unique_ptr<SimFrontEnd>(new FisheyeFrontEnd(module));
}

}  // namespace camsim
