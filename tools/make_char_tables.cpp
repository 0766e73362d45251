// Writes the character tables of types: the simple lower-case mapping of each UTF-16 unit
// and one bit a unit for letters and for white space. Run by the build; surrogates are nothing.
#include <unicode/uchar.h>

#include <cstdint>
#include <cstdio>

namespace
{
bool isSurrogate(UChar32 c)
{
    return c >= 0xD800 && c <= 0xDFFF;
}

void writeBits(FILE* out, const char* name, UBool (*test)(UChar32))
{
    std::fprintf(out, "constexpr std::uint8_t %s[8192] = {", name);
    for (UChar32 c = 0; c < 0x10000; c += 8)
    {
        unsigned bits = 0;
        for (UChar32 i = 0; i < 8; ++i)
            bits |= (!isSurrogate(c + i) && test(c + i)) ? 1U << i : 0U;
        std::fprintf(out, "%s%u,", c % 256 ? "" : "\n", bits);
    }
    std::fprintf(out, "\n};\n");
}
} // namespace

int main(int argc, char** argv)
{
    FILE* out = argc == 2 ? std::fopen(argv[1], "w") : nullptr;
    if (!out)
    {
        std::fprintf(stderr, "usage: make_char_tables OUTPUT\n");
        return 2;
    }
    std::fprintf(out, "constexpr char16_t lowerTable[65536] = {");
    for (UChar32 c = 0; c < 0x10000; ++c)
    {
        const UChar32 lower = isSurrogate(c) ? c : u_tolower(c);
        std::fprintf(
            out, "%s%ld,", c % 32 ? "" : "\n", static_cast<long>(lower < 0x10000 ? lower : c));
    }
    std::fprintf(out, "\n};\n");
    writeBits(out, "letterBits", u_isalpha);
    writeBits(out, "spaceBits", u_isUWhiteSpace);
    return std::fclose(out) == 0 ? 0 : 1;
}
