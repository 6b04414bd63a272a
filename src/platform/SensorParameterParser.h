#pragma once
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

// Conversions of the parameter list text, the text form of (id, value) pairs:
//     (3,50)(7,1)(-2,-2147483648)
// Each item is '(' id ',' value ')'; items stand back to back. Ids and values
// are decimal integers of 32 bits, a '-' directly before the digits for a
// negative number ('+' is not accepted). ASCII blanks (space, tab, CR, LF, VT, FF) may stand
// between any two tokens and around the whole text. Anything else fails the
// parse. Empty (or blank) text is an empty list.
//
// The parsers add into the container they are given (callers clear it when
// they want only the new content) and leave it untouched when the text is
// malformed. No iostreams, no per-item allocation beyond the container's own.
class SensorParameterParser {
public:
    // Pairs as a flat list, ascending by id, one pair per id.
    using Pairs = std::vector<std::pair<int, int>>;

    // Text to pairs; a later item for the same id overwrites an earlier one.
    static bool parseSensorParameter(const std::string& text, std::map<int, int>& out);

    // Pairs to text: "(%d,%d)" per pair in ascending id order; `out` is replaced.
    static bool createSensorParameterString(const std::map<int, int>& params, std::string& out);
    static std::string createSensorParameterString(const std::map<int, int>& params);

    // The id-list form "(1)(2)(17)" to a set of ids (same blank and number rules).
    static bool parseParameterIdList(const std::string& text, std::set<int>& out);
    // A set of ids to the id-list form; `out` is replaced.
    static bool createParameterIdListString(const std::set<int>& ids, std::string& out);

    // The same conversions on flat lists, in one pass over the text. The parsers add
    // into `out` (later items overwrite earlier pairs of the same id) and keep it
    // ascending and unique; text in ascending order, as the writer makes it, costs no
    // sorting. A malformed text leaves `out` as it was.
    static bool parseSensorParameter(const std::string& text, Pairs& out);
    static bool parseParameterIdList(const std::string& text, std::vector<int>& out);
    static bool createSensorParameterString(const Pairs& params, std::string& out);
    // The pair of `id` in `pairs`, or nullptr.
    static const std::pair<int, int>* findPair(const Pairs& pairs, int id);
};
