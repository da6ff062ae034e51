// The routes between the encodings, and how one conversion is checked: the same result and the same bytes
// from the plain form, the fast ones and the C library's iconv, none touched beyond buffers of the right
// size.
#ifndef TEST_ROUTES_H
#define TEST_ROUTES_H

#include <iconv.h>

#include <optional>

#include "Fuzz/Fuzz.h"

struct Route {
    size_t (*convert)(const char*, size_t, char*, size_t, int);
    int code;
    bool isTerminated;
    size_t unit;            // bytes
    const char *from, *to;  // for iconv
    size_t (*room)(size_t units, size_t capacity);
};

inline size_t Cap(size_t size, size_t capacity)
{
    return capacity != 0 ? std::min(size, capacity) : size;
}

enum { GBK_TO_UTF8 = 3, UTF8_TO_GBK = 5 };

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
inline std::optional<std::string> Iconv(const char* from, const char* to, std::string text)
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

inline bool Has(const std::string& text, const std::string& what)
{
    return text.find(what) != std::string::npos;
}

inline bool HasFourByteSequence(const std::string& text)
{
    return std::any_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) >= 0xF0; });
}

// What the route is known to do otherwise.
inline bool IsOwnWay(const Route& route, const std::string& text, const std::string& expected)
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

inline void CompareForms(const Route& route, const std::string& text, size_t capacity, unsigned skews)
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

// As units of the route where it has such, from UTF-8.
inline std::string Widened(const std::string& text, const Route& route)
{
    if (route.unit == 1) return text;
    std::string units;
    for (const wchar_t c : utf8_to_unicode(text.c_str()))
        units.append(reinterpret_cast<const char*>(&c), route.unit);
    return units;
}

// Terminated or cut to whole units, as the route wants it.
inline std::string ForRoute(const Route& route, std::string text)
{
    if (route.isTerminated) text = std::string(text.c_str()) + '\0';
    text.resize(text.size() / route.unit * route.unit);
    return text;
}

#endif  // TEST_ROUTES_H
