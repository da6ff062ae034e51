// The engine's codecs in all their forms, as Routes.h compares them, and those that no route reaches.
//
// Input: route, capacity (2 bytes), skews, whether the content is UTF-8 to be widened to the route's units,
// how often the content is repeated; then the content.
#include "../Routes.h"
#include "Bytes.h"

namespace
{
// The functions that no route reaches, on zero-terminated UTF-8 and GBK.
void TryTheOthers(const std::string& text)
{
    const size_t length = strlen(text.c_str());
    Buffer source(text.substr(0, length) + '\0');
    Buffer units(2 * length + 1), gbk(length + 2);
    const auto count = static_cast<size_t>(utf8tou(source.data(), units.data()));
    REQUIRE(count <= length && units.data()[2 * count] == 0);
    if (const auto expected = Iconv("UTF-8", "UTF-16LE", text.c_str());
        expected && !HasFourByteSequence(text))
        REQUIRE(units.All().substr(0, 2 * count) == *expected);
    utf8toGbk(source.data(), gbk.data());
    Buffer encoded(2 * count + 2);
    utoGbk(units.data(), encoded.data(), count);
    REQUIRE(strcmp(encoded.data(), gbk.data()) == 0);

    const std::wstring wide = utf8_to_unicode(source.data());
    const std::string narrow = unicode_to_utf8(wide);
    unsigned char* block = nullptr;
    const size_t produced = unicode_to_utf8(wide.data(), wide.size(), &block);
    const std::unique_ptr<unsigned char, CFree> owner(block);
    REQUIRE(narrow == std::string(block, block + produced));
    std::string gbkText, utf8Text;
    std::wstring wideOfGbk;
    UTF8ToANSI(source.data(), gbkText);
    Buffer direct(2 * length + 1);
    REQUIRE(UTF8ToANSI(source.data(), direct.data()) == gbkText.size() && gbkText == direct.data());
    ANSIToUTF8(source.data(), utf8Text);
    ANSIToUnicode(source.data(), wideOfGbk);
    REQUIRE(unicode_to_utf8(wideOfGbk) == utf8Text);

    for (size_t at = 0; at <= length; ++at) {
        Buffer tail(text.substr(at, length - at));
        wchar_t character = 0;
        const int announced = UTF8Char_ToUnicode(tail.data(), length - at, character);
        unsigned char sequence[6];
        REQUIRE(announced >= 1 && announced <= 6 && character >= 0 && character <= 0xFFFF);
        REQUIRE(unicode_to_utf8_one(static_cast<unsigned long>(character), sequence, 6) <= 3);
    }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size)
{
    LoadShippedModel();
    Input input(data, size);
    const unsigned choice = input.Byte() % (std::size(ROUTES) + 1);
    const size_t capacity = input.Number() % 0x2000;
    const unsigned skews = input.Byte();
    const bool isWidened = input.Byte() % 2 == 1;
    std::string text = input.RestRepeated();
    if (choice == std::size(ROUTES)) {
        TryTheOthers(text.substr(0, 200));
        return 0;
    }
    const Route& route = ROUTES[choice];
    CompareForms(route, ForRoute(route, isWidened ? Widened(text, route) : text), capacity, skews);
    return 0;
}
