#pragma once
#include <string>
#include <vector>

// The simulator camera's root directory: every camera path ("/hd1/...",
// "/mnt/mtd/...") lives below it. A fresh root gets a working fisheye
// configuration; files that exist are never replaced.
namespace camsim {

// The module record a fresh root describes: the fisheye board (module 88)
// with an infrared light and the light sensor on the ADC.
extern const char* const kDefaultModuleDetail;
extern const char* const kDefaultModuleParameters;
// Number of parameter schemes of a fresh root.
const int kSchemeCount = 4;

// Makes the directory (and parents) and gives its absolute path. Refuses the
// file system root, so the simulator never touches the real camera paths.
bool prepareRootDirectory(const std::string& dir, std::string& absolute, std::string& error);

// With the platform root set: writes every default file that is missing
// (through the library's atomic file layer) and lists the camera paths
// written. `fresh` tells whether the root had no module configuration yet.
// With `replace`, camsim's own sample files are written even where they exist
// (the library's files are left alone).
bool installDefaults(std::vector<std::string>& written, bool& fresh, std::string& error, bool replace = false);

// Checks that camsim's sample XML files of the root parse; otherwise names the
// file and the line where it is malformed.
bool checkSampleFiles(std::string& problem);

// The scheme mode and scheme saved in sensor.xml, read before the library
// starts (its first cycle writes the file with what is in force then).
// False when the file or either value is missing or unreadable.
bool readSchemeChoice(int& mode, int& index);

// Every regular file below the root as camera paths, sorted.
std::vector<std::string> listRootFiles();

}  // namespace camsim
