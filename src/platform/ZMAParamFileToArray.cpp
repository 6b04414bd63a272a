#include "platform/ZMAParamFileToArray.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "platform/PlatformRoot.h"

namespace {
const long kMaxPosition = 65535;
// Longest file accepted: a lens table has a few dozen rows.
const std::streamoff kMaxFileBytes = 64 * 1024;

// One number: decimal or 0x-prefixed hexadecimal, 0-65535.
bool readNumber(const std::string& word, long& value) {
    if (word.empty() || word[0] == '-' || word[0] == '+') return false;
    const char* s = word.c_str();
    char* end = nullptr;
    errno = 0;
    value = std::strtol(s, &end, (word.size() > 2 && word[0] == '0' && (word[1] == 'x' || word[1] == 'X')) ? 16 : 10);
    return errno == 0 && end != s && *end == '\0';
}
}  // namespace

bool ZMAParamFileToArray::setFilePath(const std::string& path) {
    if (path.empty()) return false;
    m_strPath = path;
    return true;
}

bool ZMAParamFileToArray::fail(int line, const std::string& reason) {
    char prefix[64];
    if (line > 0)
        std::snprintf(prefix, sizeof(prefix), "ZMAParam line %d: ", line);
    else
        std::snprintf(prefix, sizeof(prefix), "ZMAParam: ");
    m_strError = prefix + reason;
    return false;
}

bool ZMAParamFileToArray::get(std::vector<ZMAParam>& rows) {
    if (m_strPath.empty()) return fail(0, "no file path set");
    std::ifstream in(PlatformRoot::resolve(m_strPath), std::ios::binary);
    if (!in) return fail(0, "cannot open " + m_strPath);
    in.seekg(0, std::ios::end);
    std::streamoff size = in.tellg();
    if (size > kMaxFileBytes) return fail(0, "file larger than 65536 bytes");
    in.seekg(0, std::ios::beg);
    std::stringstream ss;
    ss << in.rdbuf();
    return parse(ss.str(), rows);
}

bool ZMAParamFileToArray::parse(const std::string& text, std::vector<ZMAParam>& rows) {
    std::vector<ZMAParam> table;
    std::istringstream in(text);
    std::string line;
    int number = 0;
    while (std::getline(in, line)) {
        ++number;
        size_t hash = line.find('#');
        if (hash != std::string::npos) line.erase(hash);
        std::istringstream words(line);
        std::vector<std::string> w;
        std::string word;
        while (words >> word) w.push_back(word);
        if (w.empty()) continue;
        if (w.size() != 2) return fail(number, "expected two numbers (zoom focus), found " + std::to_string(w.size()) + " words");
        long zoom = 0, focus = 0;
        if (!readNumber(w[0], zoom)) return fail(number, "zoom '" + w[0] + "' is not a number");
        if (!readNumber(w[1], focus)) return fail(number, "focus '" + w[1] + "' is not a number");
        if (zoom > kMaxPosition) return fail(number, "zoom " + w[0] + " is above 65535");
        if (focus > kMaxPosition) return fail(number, "focus " + w[1] + " is above 65535");
        if (!table.empty() && zoom <= table.back().getZoom())
            return fail(number, "zoom " + w[0] + " is not above the previous row's zoom");
        table.emplace_back(static_cast<int>(zoom), static_cast<int>(focus));
    }
    if (table.empty()) return fail(0, "the table has no rows");
    rows.swap(table);
    m_strError.clear();
    return true;
}
