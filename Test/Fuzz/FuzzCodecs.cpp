// The engine's codecs against their plain forms and the C library's iconv: the same result, the same bytes,
// and none touched beyond buffers of the right size, whatever form runs.
//
// Input: route, capacity (2 bytes), skews, whether the content is UTF-8 to be widened to the route's units,
// how often the content is repeated; then the content.
#include <iconv.h>

#include <optional>

#include "Bytes.h"
#include "Fuzz.h"

namespace
{
struct Route {
    size_t (*convert)(const char*, size_t, char*, size_t, int);
    int code;
    bool isTerminated;
    size_t unit;            // bytes
    const char *from, *to;  // for iconv
    size_t (*room)(size_t units, size_t capacity);
};

size_t Cap(size_t size, size_t capacity)
{
    return capacity != 0 ? std::min(size, capacity) : size;
}

constexpr Route ROUTES[] = {
    {TQ_ToUnicode, ENCODE_GBK, false, 1, "GBK", "UTF-16LE", [](size_t n, size_t c) { return Cap(2 * n, c); }},
    {TQ_ToUnicode, ENCODE_BIG5, false, 1, "", "", [](size_t n, size_t c) { return Cap(2 * n, c); }},
    {TQ_ToUnicode, ENCODE_UTF8, true, 1, "UTF-8", "UCS-4LE", [](size_t n, size_t) { return 4 * n + 2; }},
    {TQ_ToUtf8, ENCODE_GBK, true, 1, "GBK", "UTF-8", [](size_t n, size_t c) { return Cap(3 * n, c) + 1; }},
    {TQ_ToUtf8, ENCODE_UNICODE, false, 4, "UCS-4LE", "UTF-8",
     [](size_t n, size_t c) { return 3 * Cap(n, c) + 1; }},
    {TQ_ToGBK, ENCODE_UTF8, true, 1, "UTF-8", "GBK", [](size_t n, size_t) { return 2 * n + 1; }},
    {TQ_ToGBK, ENCODE_UNICODE, false, 2, "UTF-16LE", "GBK", [](size_t n, size_t) { return 2 * n + 2; }},
};

// Nothing where the text has a fault.
std::optional<std::string> Iconv(const char* from, const char* to, std::string text)
{
    std::string output(4 * text.size() + 1, '\0');
    char *in = text.data(), *out = output.data();
    size_t inLeft = text.size(), outLeft = output.size();
    const iconv_t converter = iconv_open(to, from);
    REQUIRE(converter != reinterpret_cast<iconv_t>(-1));
    const size_t faults = iconv(converter, &in, &inLeft, &out, &outLeft);
    iconv_close(converter);
    if (faults != 0) return {};
    output.resize(output.size() - outLeft);
    return output;
}

bool Has(const std::string& text, const std::string& what)
{
    return text.find(what) != std::string::npos;
}

bool HasFourByteSequence(const std::string& text)
{
    return std::any_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) >= 0xF0; });
}

// What the route is known to do otherwise.
bool IsOwnWay(const Route& route, const std::string& text, const std::string& expected)
{
    // Characters beyond the Basic Multilingual Plane vanish.
    if (HasFourByteSequence(route.code == ENCODE_UTF8 ? text : expected) && route.code != ENCODE_GBK &&
        route.unit != 2)
        return true;
    // The euro sign, which has one byte in GBK: 80 is a lead byte, and it is written as two.
    if (route.code == ENCODE_GBK && route.convert == TQ_ToUnicode) return Has(expected, "\xAC\x20");
    if (route.unit == 2) return Has(text, "\xAC\x20");
    // A zero ends the text.
    return route.unit == 4 && Has(expected, std::string(1, '\0'));
}

void CompareForms(const Route& route, const std::string& text, size_t capacity, unsigned skews)
{
    const size_t units = (text.size() - (route.isTerminated ? 1 : 0)) / route.unit;
    const size_t room = route.room(units, capacity);
    Buffer source(text, skews % 0x10);
    std::optional<std::string> output;
    size_t result = 0;
    UnderEachForm([&] {
        Buffer destination(room, skews / 0x10);
        const size_t got = route.convert(source.data(), units, destination.data(), capacity, route.code);
        if (output) REQUIRE(got == result && destination.All() == *output);
        result = got;
        output = destination.All();
    });
    if (capacity != 0 || *route.from == 0) return;
    const std::string content = text.substr(0, units * route.unit);
    const std::optional<std::string> expected = Iconv(route.from, route.to, content);
    if (!expected || IsOwnWay(route, content, *expected)) return;
    REQUIRE(output->compare(0, expected->size(), *expected) == 0);
    REQUIRE(result == (route.unit == 2 ? units : expected->size()));
}

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

// As units of the route, from UTF-8.
std::string Widened(const std::string& text, size_t unit)
{
    std::string units;
    for (const wchar_t c : utf8_to_unicode(text.c_str()))
        units.append(reinterpret_cast<const char*>(&c), unit);
    return units;
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
    if (route.isTerminated) text = std::string(text.c_str()) + '\0';
    if (route.unit > 1 && isWidened) text = Widened(text, route.unit);
    text.resize(text.size() / route.unit * route.unit);
    CompareForms(route, text, capacity, skews);
    return 0;
}
