#pragma once
#include <cstddef>
#include <string>

// Decimal text of 32-bit integers without printf, into a bounded buffer: what
// "%d" prints, at a small part of its cost. The parameter list texts are made of
// these ("(id,value)" items), so they are formatted on every parameter access.
class IntFormat {
public:
    // Longest text of an int: "-2147483648".
    static constexpr size_t kMaxLength = 11;

    // Writes the decimal text of v to out (no terminating zero) and returns its
    // length; out must hold kMaxLength characters.
    static size_t toText(int v, char* out) {
        // The magnitude in unsigned arithmetic, so INT_MIN has one as well.
        unsigned int u = v < 0 ? 0u - static_cast<unsigned int>(v) : static_cast<unsigned int>(v);
        size_t n = 0;
        if (v < 0) out[n++] = '-';
        size_t digits = 1;
        for (unsigned int t = u; t >= 10u; t /= 10u) ++digits;
        n += digits;
        // Two digits at a time from the end, from a table of "00".."99".
        char* p = out + n;
        while (u >= 100u) {
            const unsigned int pair = (u % 100u) * 2u;
            u /= 100u;
            *--p = kDigitPairs[pair + 1];
            *--p = kDigitPairs[pair];
        }
        if (u >= 10u) {
            *--p = kDigitPairs[u * 2u + 1];
            *--p = kDigitPairs[u * 2u];
        } else {
            *--p = static_cast<char>('0' + u);
        }
        return n;
    }

    // Longest "(id,value)" item.
    static constexpr size_t kMaxPairLength = 2 * kMaxLength + 3;

    // Writes "(id,value)" at p (kMaxPairLength characters must fit) and returns its end.
    static char* writePair(char* p, int id, int value) {
        *p++ = '(';
        p += toText(id, p);
        *p++ = ',';
        p += toText(value, p);
        *p++ = ')';
        return p;
    }

    static void append(std::string& out, int v) {
        char text[kMaxLength];
        out.append(text, toText(v, text));
    }

    // Appends the parameter list item "(id,value)".
    static void appendPair(std::string& out, int id, int value) {
        char text[kMaxPairLength];
        out.append(text, static_cast<size_t>(writePair(text, id, value) - text));
    }

    // Appends the id list item "(id)".
    static void appendId(std::string& out, int id) {
        char text[kMaxLength + 2];
        size_t n = 0;
        text[n++] = '(';
        n += toText(id, text + n);
        text[n++] = ')';
        out.append(text, n);
    }

private:
    static constexpr char kDigitPairs[] =
        "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
        "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
        "8081828384858687888990919293949596979899";
};
