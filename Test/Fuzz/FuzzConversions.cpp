// The exported buffer conversions, with any source code, length, capacity and content, in buffers exactly as
// large as the public header says: no byte beyond them is touched, the result is within the header's bound
// and the terminator behind it, and a source that is to be detected gives what its detected code gives.
//
// Input: function, source code, length (3 bytes), capacity (3 bytes), skews and absence of the model (2
// bytes); then the content.
#include <climits>
#include <cstdint>

#include "Fuzz.h"

namespace
{
using Exported = size_t(const char*, size_t, char*, size_t, int);
constexpr Exported* FUNCTIONS[] = {TQ_ToUnicode, TQ_ToUtf8, TQ_ToGBK};
constexpr int CODES[] = {ENCODE_UTF8, ENCODE_GBK, ENCODE_BIG5, ENCODE_UNICODE};

// A buffer that would be larger is not tried.
constexpr size_t LARGEST = 1 << 16;

// `size` units, where a size that no memory can hold stays one.
size_t Times(size_t unit, size_t size)
{
    return size > LARGEST ? SIZE_MAX / 2 : unit * size;
}

// One line of the header's tables.
struct Line {
    size_t readable = 0, writable = 0;
    size_t result = 0;  // exactly, or at most
    bool isExact = true;
    size_t zeros = 0;  // behind the result
};

Line LineOf(Exported* function, int code, size_t length, size_t capacity, size_t terminated)
{
    const auto cap = [&](size_t size) { return capacity != 0 ? std::min(size, capacity) : size; };
    const bool isPaired = code == ENCODE_GBK || code == ENCODE_BIG5;
    if (function == TQ_ToUnicode) {
        const size_t units = Times(2, length), larger = std::max(length, capacity);
        if (isPaired) return {length, cap(units), cap(units), false, 0};
        if (code == ENCODE_UTF8) return {terminated + 1, 4 * terminated + 2, 4 * terminated, false, 2};
        if (code == ENCODE_UNICODE) return {larger, Times(1, larger) + 1, larger, true, 1};
    } else if (function == TQ_ToUtf8) {
        const size_t n = cap(length), most = cap(3 * terminated);
        if (code == ENCODE_UTF8) return {n, Times(1, n) + 1, n, true, 1};
        if (isPaired) return {terminated + 1, most + 1, most, false, 1};
        if (code == ENCODE_UNICODE) return {Times(4, n), Times(3, n) + 1, Times(3, n), false, 0};
    } else {
        if (code == ENCODE_UTF8) return {terminated + 1, 2 * terminated + 1, 2 * terminated, false, 1};
        if (isPaired) return {length, Times(1, length) + 1, length, true, 1};
        if (code == ENCODE_UNICODE) return {Times(2, length), Times(2, length) + 2, length, true, 0};
    }
    return {};
}

// What suits every code, for a source that is to be detected.
Line LineOfAll(Exported* function, size_t length, size_t capacity, size_t terminated)
{
    Line all = {std::max(length, terminated + 1), 0, SIZE_MAX, false, 0};
    for (const int code : CODES) {
        const Line line = LineOf(function, code, length, capacity, terminated);
        all.readable = std::max(all.readable, line.readable);
        all.writable = std::max(all.writable, line.writable);
    }
    return all;
}

int ChooseCode(unsigned byte)
{
    constexpr unsigned VALID = std::size(CODES);
    if (byte % 8 < VALID) return CODES[byte % 8];
    if (byte % 8 == VALID) return ENCODE_UNKNOWN;
    return static_cast<int>(byte < 0x10 ? byte : byte * 0x01010101U);
}

size_t ChooseSize(Input& input, size_t contentSize)
{
    const size_t known[] = {contentSize, contentSize / 2, contentSize / 4, 0,
                            SIZE_MAX,    LONG_MAX,        SIZE_MAX / 4 + 1};
    const unsigned choice = input.Byte(), number = input.Number();
    return choice < std::size(known) ? known[choice] : number % 0x1000;
}

void Try(Exported* function, int code, size_t length, size_t capacity, unsigned skews, std::string content)
{
    const size_t terminated = strlen(content.c_str());
    const Line line = code == ENCODE_UNKNOWN ? LineOfAll(function, length, capacity, terminated)
                                             : LineOf(function, code, length, capacity, terminated);
    if (std::max(line.readable, line.writable) > 4 * LARGEST) return;
    // Where it ends at a zero, that is the last byte; where the length counts, there is that much.
    content.resize(line.readable);

    Buffer source(content, skews % 0x10), destination(line.writable, skews / 0x10);
    const size_t result = function(source.data(), length, destination.data(), capacity, code);
    const std::string output = destination.All();
    if (code != ENCODE_UNKNOWN) {
        REQUIRE(line.isExact ? result == line.result : result <= line.result);
        for (size_t i = 0; i < line.zeros; ++i) REQUIRE(output[result + i] == 0);
        if (function == TQ_ToUtf8 && line.writable > 0) REQUIRE(output.find('\0') <= result);
        return;
    }
    Buffer again(line.writable);
    const int detected = TQ_CodeDetect(source.data(), length);
    REQUIRE(function(source.data(), length, again.data(), capacity, detected == 0 ? -1 : detected) == result);
    REQUIRE(again.All() == output);
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size)
{
    LoadShippedModel();
    constexpr size_t CONTROLS = 10;
    const size_t contentSize = size > CONTROLS ? size - CONTROLS : 0;
    Input input(data, size);
    Exported* const function = FUNCTIONS[input.Byte() % std::size(FUNCTIONS)];
    const int code = ChooseCode(input.Byte());
    const size_t length = ChooseSize(input, contentSize), capacity = ChooseSize(input, contentSize);
    const unsigned skews = input.Byte();
    const bool isModelAbsent = input.Byte() % 8 == 7;
    const auto gbk = g_mapGBKToUnicode, big5 = g_mapBig5ToUnicode;
    const auto trie = g_pstTrieTable;
    if (isModelAbsent) g_mapGBKToUnicode = g_mapBig5ToUnicode = nullptr;
    if (isModelAbsent) g_pstTrieTable = nullptr;
    Try(function, code, length, capacity, skews, input.Rest());
    g_mapGBKToUnicode = gbk;
    g_mapBig5ToUnicode = big5;
    g_pstTrieTable = trie;
    return 0;
}
