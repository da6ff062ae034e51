// Writes Src/CodeTrans/CodeTable.cpp to standard output: the GBK code of every UTF-16 code unit, as the C
// library's own GBK converter gives it. Run it with the GNU C library; the test suite compares the table with
// that converter.
#include <iconv.h>

#include <cstdio>
#include <cstdlib>

namespace
{
constexpr unsigned ROW = 16;

// 0 where GBK has no code for the unit.
unsigned GbkCode(iconv_t converter, unsigned unit)
{
    char utf16[2] = {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
    unsigned char gbk[2] = {};
    char* in = utf16;
    char* out = reinterpret_cast<char*>(gbk);
    size_t inLeft = sizeof utf16, outLeft = sizeof gbk;
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    if (iconv(converter, &in, &inLeft, &out, &outLeft) != 0) return 0;
    return outLeft == 1 ? gbk[0] + 0U : gbk[0] * 256U + gbk[1];
}
}  // namespace

int main()
{
    iconv_t converter = iconv_open("GBK", "UTF-16LE");
    if (converter == reinterpret_cast<iconv_t>(-1)) {
        fprintf(stderr, "CodeTableGenerator: the C library has no converter from UTF-16LE to GBK\n");
        return EXIT_FAILURE;
    }
    printf(
        "// DO NOT EDIT: written by `cmake --build build --target CodeTable`.\n"
        "// GBK code of every UTF-16 code unit from the GNU C library's GBK converter; 0 where there is "
        "none.\n"
        "#include \"STLCodeTrans.h\"\n\n// clang-format off\nconst unsigned short CodeTable[65536] = {\n");
    unsigned twoBytes = 0;
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
        const unsigned code = GbkCode(converter, unit);
        twoBytes += code >= 0x100;
        printf("%s0x%04X,%s", unit % ROW == 0 ? "    " : " ", code, unit % ROW == ROW - 1 ? "\n" : "");
    }
    printf("};\n");
    iconv_close(converter);
    fprintf(stderr, "CodeTableGenerator: %u two-byte codes\n", twoBytes);
    return EXIT_SUCCESS;
}
