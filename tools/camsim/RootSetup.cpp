#include "camsim/RootSetup.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include <tinyxml2.h>

#include "platform/ConfigFileNameConst.h"
#include "platform/FsUtil.h"
#include "platform/KSFile.h"
#include "platform/PlatformRoot.h"
#include "storage/SensorPaths.h"

namespace camsim {

const char* const kDefaultModuleDetail =
    "RS485=/dev/ttyS1;isInfrared=1;GPIOInfraredLight=2,7,0;GPIO=1,5,1;autoFocus=1;manualFocus=0;fisheye=1;lens=fisheye;"
    "autoIris=0;DNDefault=0";
const char* const kDefaultModuleParameters = "RS485=9600,8,1,0;GUIConfig=S2GUIConfig.xml;Prefix=S2";

namespace {

#ifdef CAMSIM_DEFAULTS_DIR
const char* const kSampleDir = CAMSIM_DEFAULTS_DIR;
#else
const char* const kSampleDir = "";
#endif

std::string moduleConfigXml() {
    return std::string(
               "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<moduleConfig>\n"
               "    <module id=\"88\" type=\"sensor\"\n"
               "            detail=\"") +
           kDefaultModuleDetail + "\"\n            parameters=\"" + kDefaultModuleParameters +
           "\"/>\n</moduleConfig>\n";
}

std::string sensorAbilityXml() {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<sensorAbility>\n    <paramScheme>\n"
           "        <item name=\"SchemeNum\" value=\"" +
           std::to_string(kSchemeCount) + "\"/>\n    </paramScheme>\n</sensorAbility>\n";
}

const char* const kMachineInfoXml =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<machineInfo hardwareModel=\"KS-S2-FE\"\n"
    "             hardwareCode=\"0x5a17\"\n"
    "             hardwareDescription=\"S2 fisheye board (simulated)\"\n"
    "             productModel=\"IPC-FE12-SIM\"\n"
    "             barCode=\"6901234567892\"\n"
    "             productionTime=\"2024-05-01 08:30:00\"/>\n";

// Used when the sample tuning file of the source tree is not at hand.
const char* const kIspParamXml =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<config realTimeUpdate=\"0\" time=\"1\">\n"
    "    <DN enable=\"1\">\n"
    "        <night min=\"0\" max=\"1\"><item name=\"EE\" value=\"20\"/></night>\n"
    "        <day min=\"1\" max=\"2\"><item name=\"EE\" value=\"45\"/></day>\n"
    "    </DN>\n"
    "    <GAIN enable=\"1\">\n"
    "        <low min=\"0\" max=\"24\"><item name=\"A0\" value=\"-1\"/><item name=\"TM\" value=\"-1\"/></low>\n"
    "        <mid min=\"24\" max=\"48\"><item name=\"A0\" value=\"24\"/><item name=\"TM\" value=\"6\"/></mid>\n"
    "        <high min=\"48\" max=\"72\"><item name=\"A0\" value=\"40\"/><item name=\"TM\" value=\"10\"/></high>\n"
    "        <max min=\"72\" max=\"1000\"><item name=\"A0\" value=\"64\"/><item name=\"TM\" value=\"16\"/></max>\n"
    "    </GAIN>\n"
    "</config>\n";

bool readHostFile(const std::string& path, std::string& out) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    std::ostringstream ss;
    ss << in.rdbuf();
    out = ss.str();
    return true;
}

// Camera paths of the files below a host directory.
void collect(const std::string& hostDir, const std::string& cameraDir, std::vector<std::string>& out) {
    DIR* d = ::opendir(hostDir.c_str());
    if (d == nullptr) return;
    while (struct dirent* e = ::readdir(d)) {
        std::string name = e->d_name;
        if (name == "." || name == "..") continue;
        std::string host = hostDir + "/" + name;
        struct stat st {};
        if (::lstat(host.c_str(), &st) != 0) continue;
        if (S_ISDIR(st.st_mode))
            collect(host, cameraDir + "/" + name, out);
        else if (S_ISREG(st.st_mode))
            out.push_back(cameraDir + "/" + name);
    }
    ::closedir(d);
}

bool g_replace = false;

bool writeIfMissing(const std::string& cameraPath, const std::string& content, std::vector<std::string>& written,
                    std::string& error) {
    if (!g_replace && KSFile::isExist(cameraPath)) return true;
    std::string old;
    if (g_replace && KSFile::readAll(cameraPath, old) && old == content) return true;
    if (!KSFile::writeAll(cameraPath, content)) {
        error = "cannot write " + cameraPath;
        return false;
    }
    written.push_back(cameraPath);
    return true;
}

}  // namespace

bool prepareRootDirectory(const std::string& dir, std::string& absolute, std::string& error) {
    if (dir.empty()) {
        error = "empty root directory";
        return false;
    }
    if (!FsUtil::makeDirs(dir)) {
        error = "cannot create root directory " + dir;
        return false;
    }
    char resolved[PATH_MAX];
    if (::realpath(dir.c_str(), resolved) == nullptr) {
        error = "cannot resolve root directory " + dir;
        return false;
    }
    absolute = resolved;
    if (absolute == "/") {
        error = "refusing \"/\" as the root: the simulator keeps the camera's files in a directory of its own";
        return false;
    }
    return true;
}

bool installDefaults(std::vector<std::string>& written, bool& fresh, std::string& error, bool replace) {
    fresh = !KSFile::isExist(ConfigFileNameConst::getModuleConfigFileName());
    g_replace = replace;
    // The sample tree of the source (sensor UI texts, tuning file) first.
    if (kSampleDir[0] != '\0') {
        std::vector<std::string> samples;
        collect(kSampleDir, "", samples);
        std::sort(samples.begin(), samples.end());
        for (const std::string& cameraPath : samples) {
            std::string content;
            if (!readHostFile(kSampleDir + cameraPath, content)) continue;
            if (!writeIfMissing(cameraPath, content, written, error)) return false;
        }
    }
    return writeIfMissing(ConfigFileNameConst::getModuleConfigFileName(), moduleConfigXml(), written, error) &&
           writeIfMissing(ConfigFileNameConst::getSensorAbilityFileName(), sensorAbilityXml(), written, error) &&
           writeIfMissing(ConfigFileNameConst::getMachineInfoFileName(), kMachineInfoXml, written, error) &&
           writeIfMissing(SensorPaths::kISPParamFile, kIspParamXml, written, error);
}

bool checkSampleFiles(std::string& problem) {
    const std::string files[] = {ConfigFileNameConst::getModuleConfigFileName(),
                                 ConfigFileNameConst::getSensorAbilityFileName(),
                                 ConfigFileNameConst::getMachineInfoFileName()};
    for (const std::string& cameraPath : files) {
        tinyxml2::XMLDocument doc;
        const std::string host = PlatformRoot::resolve(cameraPath);
        if (doc.LoadFile(host.c_str()) != tinyxml2::XML_SUCCESS) {
            problem = cameraPath + " of the root is malformed (line " + std::to_string(doc.ErrorLineNum()) + ": " +
                      doc.ErrorStr() + ")";
            return false;
        }
        if (doc.RootElement() == nullptr) {
            problem = cameraPath + " of the root is malformed (no element)";
            return false;
        }
    }
    return true;
}

bool readSchemeChoice(int& mode, int& index) {
    tinyxml2::XMLDocument doc;
    if (doc.LoadFile(PlatformRoot::resolve(SensorPaths::kSchemeStateFile).c_str()) != tinyxml2::XML_SUCCESS ||
        doc.RootElement() == nullptr)
        return false;
    bool haveMode = false, haveIndex = false;
    for (auto* node = doc.RootElement()->FirstChildElement(); node; node = node->NextSiblingElement())
        for (auto* item = node->FirstChildElement(); item; item = item->NextSiblingElement()) {
            const char* name = item->Attribute("name");
            if (name == nullptr) continue;
            if (std::string(name) == "SchemeMode") haveMode = item->QueryIntAttribute("value", &mode) == tinyxml2::XML_SUCCESS;
            if (std::string(name) == "SchemeIndex")
                haveIndex = item->QueryIntAttribute("value", &index) == tinyxml2::XML_SUCCESS;
        }
    return haveMode && haveIndex;
}

std::vector<std::string> listRootFiles() {
    std::vector<std::string> out;
    std::string root = PlatformRoot::get();
    if (!root.empty() && root.back() == '/') root.pop_back();
    collect(root, "", out);
    std::sort(out.begin(), out.end());
    return out;
}

}  // namespace camsim
