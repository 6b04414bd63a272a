#pragma once
#include <cstdint>
#include <string>
#include <vector>

// Parsing helpers for the simulator's command language.
namespace camsim {

// Splits a line into blank-separated words; text in double quotes is one word.
std::vector<std::string> splitWords(const std::string& line);
// Splits a -c argument into commands at ';'.
std::vector<std::string> splitCommands(const std::string& text);
std::string trim(const std::string& s);
std::string toLower(const std::string& s);
// A whole decimal 32-bit integer, optionally signed.
bool parseInt(const std::string& text, int& value);
// "HH:MM" or "HH:MM:SS" (hour 0-23).
bool parseTimeOfDay(const std::string& text, int& hour, int& minute, int& second);
// "HH:MM-HH:MM" with hours up to 24 ("24:00" is the end of the day).
bool parseWindow(const std::string& text, int& startHour, int& startMinute, int& endHour, int& endMinute);
// "90", "90s", "1.5s", "15m", "2h", "1d", "1500ms" as milliseconds.
bool parseDuration(const std::string& text, int64_t& ms);
// The text with control bytes (other than line ends and tabs) shown escaped
// ("\x1b", "\x00"), so that nothing from a file or a script acts on the terminal.
std::string printable(const std::string& text);

}  // namespace camsim
