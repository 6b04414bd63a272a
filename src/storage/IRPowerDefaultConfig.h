#pragma once
#include <string>

#include "platform/XmlConfigureTool.h"
#include "storage/IRPowerParam.h"

// Reads and writes the default infrared lamp power table of the camera and
// its version, an XML configuration document:
//     <IRConfig>
//         <version><item version="3"/></version>
//         <IRPower>
//             <item zoomup="0" far="60" mid="40" near="20"/>
//             <item zoomup="1000" far="80" mid="50" near="30"/>
//         </IRPower>
//     </IRConfig>
// The caller names the file and gives a flag (handed to the XML library
// unchanged) on every call. Results: 0 success, -1 a node is missing, -2 its
// items cannot be read, -3 a property is missing, -4 the file cannot be opened.
class IRPowerDefaultConfig {
public:
    enum { Success = 0, NoNode = -1, NoItem = -2, NoProperty = -3, OpenFailed = -4 };

    IRPowerDefaultConfig() = default;

    // Mode 1 reads (the file must exist), 2 updates, 3 creates. A missing file
    // opened in mode 2 or 3 is created with root "IRConfig" and a "version"
    // node carrying the cached version. 1 on success, 0 on failure.
    int open(int p_nFlag, const std::string& p_strPath, int p_nMode);
    // Closes the document, saving what was changed. 1 on success, 0 when the save failed.
    int close();

    // The table version: from the cache once known, else from the file.
    int getVersion(int p_nFlag, const std::string& p_strPath, int& p_nVersion);
    // Writes the version into the file, unless it is already the cached one.
    int setVersion(int p_nFlag, const std::string& p_strPath, int p_nVersion);
    // Reads every row of the table; p_out gets them only when all rows are complete.
    int load(int p_nFlag, const std::string& p_strPath, IRPowerParam& p_out);

private:
    bool addVersionNode(int p_nFlag, int p_nVersion);

    int m_nVersion = 0;
    XmlConfigureTool m_xmlTool;
    bool m_bVersionLoaded = false;
};
