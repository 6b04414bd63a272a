#include "camsim/ReplayReport.h"

#include <algorithm>
#include <map>
#include <sstream>

#include "camsim/Scenario.h"

namespace camsim {

int ReplayReport::toNight() const {
    return static_cast<int>(std::count_if(transitions.begin(), transitions.end(),
                                          [](const Transition& t) { return t.state == 0; }));
}

int ReplayReport::toDay() const { return static_cast<int>(transitions.size()) - toNight(); }

int ReplayReport::worstHourFlips(int* hourStart) const {
    std::map<int, int> perHour;
    for (const Transition& t : transitions) ++perHour[t.seconds / 3600];
    int worst = 0, at = startSeconds / 3600;
    for (const auto& kv : perHour)
        if (kv.second > worst) worst = kv.second, at = kv.first;
    if (hourStart != nullptr) *hourStart = at * 3600;
    return worst;
}

double ReplayReport::meanFlipsPerHour() const {
    return hours() > 0 ? static_cast<double>(transitions.size()) / hours() : 0;
}

double ReplayReport::meanLatency() const {
    if (latencies.empty()) return 0;
    double sum = 0;
    for (int l : latencies) sum += l;
    return sum / static_cast<double>(latencies.size());
}

int ReplayReport::worstLatency() const {
    return latencies.empty() ? 0 : *std::max_element(latencies.begin(), latencies.end());
}

void ReplayReport::printText(FILE* o) const {
    int worstAt = 0;
    const int worst = worstHourFlips(&worstAt);
    std::fprintf(o, "replay %s: %s-%s (%.1f h), IR reflection %.0f, anti-flap guard %s\n", scenario.c_str(),
                 Scenario::clockText(startSeconds).c_str(), Scenario::clockText(endSeconds).c_str(), hours(),
                 reflection, guard ? ("on (hold-off " + std::to_string(guardHoldOff) + " s, ceiling " +
                                      std::to_string(guardCeiling) + " s)").c_str()
                                   : "off");
    std::fprintf(o, "thresholds: night at light <= %d, day at light >= %d\n", nightLevel, dayLevel);
    std::fprintf(o, "transitions: %d to night, %d to day\n", toNight(), toDay());
    const size_t shown = 20;
    for (size_t i = 0; i < transitions.size() && i < shown; ++i)
        std::fprintf(o, "  %s  %s\n", Scenario::clockText(transitions[i].seconds).c_str(),
                     transitions[i].state == 1 ? "to day" : "to night");
    if (transitions.size() > shown)
        std::fprintf(o, "  ... %zu more (--json lists them all)\n", transitions.size() - shown);
    std::fprintf(o, "flips per hour: worst %d (hour from %s), mean %.2f\n", worst,
                 Scenario::clockText(worstAt).c_str(), meanFlipsPerHour());
    std::fprintf(o, "wrong mode: %d s (night in bright light %d s, day in the dark %d s)\n", wrongSeconds,
                 wrongNightSeconds, wrongDaySeconds);
    std::fprintf(o, "switching latency: mean %.1f s, worst %d s (%zu switches that ended a wrong mode)\n",
                 meanLatency(), worstLatency(), latencies.size());
    std::fprintf(o, "GPIO writes: %d\nISP commands: %d sets, %d reads\nflash: %lld bytes in %d file writes\n",
                 gpioWrites, ispSets, ispReads, flashBytes, filesWritten);
    std::fprintf(o, "real time: %.2f s (%.1f ms per simulated hour)\n", realSeconds,
                 hours() > 0 ? realSeconds * 1000 / hours() : 0);
}

void ReplayReport::printJson(FILE* o) const {
    int worstAt = 0;
    const int worst = worstHourFlips(&worstAt);
    std::fprintf(o, "{\"scenario\":\"");
    for (char c : scenario) {
        if (c == '"' || c == '\\') std::fputc('\\', o);
        if (static_cast<unsigned char>(c) >= 0x20) std::fputc(c, o);
    }
    std::fprintf(o, "\",\"start\":\"%s\",\"end\":\"%s\",\"hours\":%.4f,\"reflection\":%g,", Scenario::clockText(startSeconds).c_str(),
                 Scenario::clockText(endSeconds).c_str(), hours(), reflection);
    std::fprintf(o, "\"guard\":{\"on\":%s,\"hold_off_s\":%d,\"ceiling_s\":%d},", guard ? "true" : "false",
                 guardHoldOff, guardCeiling);
    std::fprintf(o, "\"night_level\":%d,\"day_level\":%d,\"to_night\":%d,\"to_day\":%d,\"transitions\":[", nightLevel,
                 dayLevel, toNight(), toDay());
    for (size_t i = 0; i < transitions.size(); ++i)
        std::fprintf(o, "%s{\"time\":\"%s\",\"to\":\"%s\"}", i ? "," : "",
                     Scenario::clockText(transitions[i].seconds).c_str(), transitions[i].state == 1 ? "day" : "night");
    std::fprintf(o, "],\"flips_per_hour\":{\"worst\":%d,\"worst_hour\":\"%s\",\"mean\":%.4f},", worst,
                 Scenario::clockText(worstAt).c_str(), meanFlipsPerHour());
    std::fprintf(o, "\"wrong_mode_s\":%d,\"wrong_night_s\":%d,\"wrong_day_s\":%d,", wrongSeconds, wrongNightSeconds,
                 wrongDaySeconds);
    std::fprintf(o, "\"latency_s\":{\"mean\":%.3f,\"worst\":%d,\"count\":%zu},", meanLatency(), worstLatency(),
                 latencies.size());
    std::fprintf(o, "\"gpio_writes\":%d,\"isp_sets\":%d,\"isp_reads\":%d,\"flash_bytes\":%lld,\"files_written\":%d,",
                 gpioWrites, ispSets, ispReads, flashBytes, filesWritten);
    std::fprintf(o, "\"real_s\":%.3f}\n", realSeconds);
}

std::string ReplayReport::svg() const {
    // Time runs left to right; light 0-100 bottom to top in the upper plot, the
    // day/night state and the lamps as bands below it.
    const double W = 1200, left = 50, right = 20, top = 20, plotH = 300, bandH = 24;
    const double plotW = W - left - right;
    const int span = std::max(1, endSeconds - startSeconds);
    auto X = [&](double s) { return left + plotW * (s - startSeconds) / span; };
    auto Y = [&](double light) { return top + plotH * (1 - light / 100.0); };
    std::ostringstream s;
    s.setf(std::ios::fixed);
    s.precision(1);
    const double H = top + plotH + 30 + 2 * (bandH + 8) + 40;
    s << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << W << "\" height=\"" << H
      << "\" font-family=\"sans-serif\" font-size=\"11\">\n";
    s << "<title>camsim replay " << scenario << "</title>\n";
    s << "<rect x=\"" << left << "\" y=\"" << top << "\" width=\"" << plotW << "\" height=\"" << plotH
      << "\" fill=\"#fafafa\" stroke=\"#888\"/>\n";
    // Hour grid and labels.
    for (int h = (startSeconds + 3599) / 3600; h * 3600 <= endSeconds; ++h) {
        const double x = X(h * 3600);
        s << "<line x1=\"" << x << "\" y1=\"" << top << "\" x2=\"" << x << "\" y2=\"" << top + plotH
          << "\" stroke=\"#ddd\"/>";
        s << "<text x=\"" << x - 10 << "\" y=\"" << H - 8 << "\">" << (h % 24 < 10 ? "0" : "") << h % 24
          << "h</text>\n";
    }
    for (int l : {0, 50, 100})
        s << "<text x=\"" << left - 30 << "\" y=\"" << Y(l) + 4 << "\">" << l << "</text>";
    // Thresholds.
    s << "\n<line x1=\"" << left << "\" y1=\"" << Y(nightLevel) << "\" x2=\"" << left + plotW << "\" y2=\""
      << Y(nightLevel) << "\" stroke=\"#36c\" stroke-dasharray=\"6,4\"/>";
    s << "<text x=\"" << left + 4 << "\" y=\"" << Y(nightLevel) - 3 << "\" fill=\"#36c\">night threshold "
      << nightLevel << "</text>\n";
    s << "<line x1=\"" << left << "\" y1=\"" << Y(dayLevel) << "\" x2=\"" << left + plotW << "\" y2=\""
      << Y(dayLevel) << "\" stroke=\"#c60\" stroke-dasharray=\"6,4\"/>";
    s << "<text x=\"" << left + 4 << "\" y=\"" << Y(dayLevel) - 3 << "\" fill=\"#c60\">day threshold " << dayLevel
      << "</text>\n";
    // Curves, thinned to about one point per pixel column (keeping the extremes of each column).
    auto curve = [&](bool sensor, const char* colour, double width) {
        const size_t n = samples.size();
        const size_t per = std::max<size_t>(1, n / static_cast<size_t>(plotW));
        s << "<polyline fill=\"none\" stroke=\"" << colour << "\" stroke-width=\"" << width << "\" points=\"";
        for (size_t i = 0; i < n; i += per) {
            float lo = 101, hi = -1;
            for (size_t k = i; k < std::min(n, i + per); ++k) {
                const float v = sensor ? samples[k].sensor : samples[k].scene;
                lo = std::min(lo, v), hi = std::max(hi, v);
            }
            const double x = X(startSeconds + static_cast<double>(i));
            s << x << "," << Y(hi) << " ";
            if (lo != hi) s << x << "," << Y(lo) << " ";
        }
        s << "\"/>\n";
    };
    curve(true, "#e33", 1.0);
    curve(false, "#222", 1.6);
    // Bands: day/night state, lamps.
    auto band = [&](double y, const char* label, auto on, const char* onColour, const char* offColour) {
        s << "<text x=\"4\" y=\"" << y + bandH / 2 + 4 << "\">" << label << "</text>\n";
        size_t i = 0;
        while (i < samples.size()) {
            size_t j = i;
            const bool v = on(samples[i]);
            while (j < samples.size() && on(samples[j]) == v) ++j;
            s << "<rect x=\"" << X(startSeconds + static_cast<double>(i)) << "\" y=\"" << y << "\" width=\""
              << std::max(0.3, X(startSeconds + static_cast<double>(j)) - X(startSeconds + static_cast<double>(i)))
              << "\" height=\"" << bandH << "\" fill=\"" << (v ? onColour : offColour) << "\"/>";
            i = j;
        }
        s << "\n";
    };
    const double b1 = top + plotH + 12;
    band(b1, "state", [](const Sample& x) { return x.state == 1; }, "#fd5", "#236");
    band(b1 + bandH + 8, "IR lamps", [](const Sample& x) { return x.lamps; }, "#c33", "#eee");
    // Transitions as ticks on the plot.
    for (const Transition& t : transitions)
        s << "<line x1=\"" << X(t.seconds) << "\" y1=\"" << top + plotH - 8 << "\" x2=\"" << X(t.seconds)
          << "\" y2=\"" << top + plotH << "\" stroke=\"" << (t.state == 1 ? "#c90" : "#236") << "\"/>";
    s << "\n<text x=\"" << left + plotW - 420 << "\" y=\"" << top + 14
      << "\"><tspan fill=\"#222\">scene light</tspan>  <tspan fill=\"#e33\">what the sensor read</tspan>  "
      << transitions.size() << " switches, " << wrongSeconds << " s in the wrong mode</text>\n";
    s << "</svg>\n";
    return s.str();
}

}  // namespace camsim
