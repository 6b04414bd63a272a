#pragma once
#include <string>
#include <vector>

#include "app/ModuleConfigure.h"

// Reads the module configuration file ("/hd1/moduleConfig/moduleConfig.xml").
// Format (docs/platform-files.md): a root element "moduleConfig" with one
// element per fitted module:
//     <module id="88" type="sensor" detail="RS485=/dev/ttyS1;isInfrared=1"
//             parameters="RS485=9600,8,1,0"/>
// "id" (a decimal integer) is required; "type", "detail" and "parameters" may
// be left out (""). Other elements are ignored.
class ModuleConfigureParser {
public:
    // The modules in file order whose type equals `moduleType` (all modules when
    // `moduleType` is empty); `out` is replaced. True also when no module matches.
    // False (and `out` empty) when the file is missing or not well-formed, its
    // root is not "moduleConfig", or a module lacks an integer id.
    static bool parse(const std::string& fileName, const std::string& moduleType, std::vector<ModuleConfigure>& out);
};
