#pragma once
#include <string>
#include <vector>

#include "platform/ZMAParam.h"

// Reads the lens table file ("/hd1/program/config/ZMAParam.txt", resolved under
// the platform root; format in docs/platform-files.md) into a list of rows.
class ZMAParamFileToArray {
public:
    // The camera path of the file; false for an empty path.
    bool setFilePath(const std::string& path);
    // Reads and checks the whole file. On success `rows` holds the table; on
    // failure it is left as it was and getError() tells why, with the line number.
    bool get(std::vector<ZMAParam>& rows);
    // Parses a table text (the file's content); same rules and messages as get.
    bool parse(const std::string& text, std::vector<ZMAParam>& rows);
    const std::string& getError() const { return m_strError; }

private:
    bool fail(int line, const std::string& reason);

    std::string m_strPath;
    std::string m_strError;
};
