#pragma once
#include <string>
#include <vector>

namespace camsim {

// A light scenario for `camsim replay`: the scene light over device time,
// read from a CSV file (docs/scenarios.md). Between two rows the light (and
// the ISP gain, when given) changes linearly.
class Scenario {
public:
    struct Row {
        int seconds = 0;     // device time, seconds after 00:00:00 of the first day
        double light = 0;    // scene light, 0 (dark) to 100 (bright)
        double gain = -1;    // ISP gain 0-100; -1 when the file has no gain column
        int line = 0;        // line of the file
    };

    // Reads a scenario file. False with `error` naming the file and line.
    bool load(const std::string& path, std::string& error);
    // Reads scenario text; `name` stands for the file in messages.
    bool parse(const std::string& text, const std::string& name, std::string& error);

    const std::vector<Row>& rows() const { return m_rows; }
    int startSeconds() const { return m_rows.empty() ? 0 : m_rows.front().seconds; }
    int endSeconds() const { return m_rows.empty() ? 0 : m_rows.back().seconds; }
    // The scene light at a device time (seconds as in Row), held flat outside the rows.
    double lightAt(double seconds) const;
    // The ISP gain at a device time; -1 when the scenario has no gain column.
    double gainAt(double seconds) const;
    bool hasGain() const { return m_bGain; }
    // How much of the camera's own infrared the scene throws back to the light
    // sensor while the lamps are on, in points of light (0-100).
    double reflection() const { return m_dReflection; }
    void setReflection(double points) { m_dReflection = points; }
    // The file's name without directories and extension.
    const std::string& name() const { return m_strName; }

    // "HH:MM:SS" with hours 0-47 (24-47 are the next day) as seconds; false when malformed.
    static bool parseClock(const std::string& text, int& seconds);
    static std::string clockText(int seconds);

private:
    bool parseRows(const std::string& text, const std::string& name, std::string& error);
    double interpolate(double seconds, bool gain) const;

    std::vector<Row> m_rows;
    bool m_bGain = false;
    double m_dReflection = 0;
    std::string m_strName;
};

}  // namespace camsim
