#pragma once

// `camsim replay FILE [--svg FILE] [--json] [--reflection N] [--anti-flap[=HOLDOFF,CEILING]]`:
// replays a light scenario (docs/scenarios.md) and prints the report. The
// arguments after "replay"; returns the process exit status (0 done, 2 bad
// arguments or scenario, nothing run).
namespace camsim {
int replayMain(int argc, const char* const* argv);
}
