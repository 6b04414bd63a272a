#pragma once
// Compile-time checking of printf-style format strings for every variadic
// message function of the project.
#define KS_PRINTF_FORMAT(fmtIndex, argIndex) __attribute__((format(printf, fmtIndex, argIndex)))
