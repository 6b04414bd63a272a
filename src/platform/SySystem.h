#pragma once

// Runs a command with a time limit in seconds. Plain "cp A B", "mv A B" and
// "rm A" are carried out directly, with their paths under the platform root.
// Any other command runs through /bin/sh -c and is killed when the limit
// expires; while the platform root is not "/" such commands are refused.
// Returns 0 on success, non-zero on failure.
int sy_system(const char* command, int timeoutSeconds);
