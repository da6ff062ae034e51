// Hostile input: any bytes as text for every exported buffer function, and as a damaged model under the
// detector.
//
// With Clang and -fsanitize=fuzzer a fuzz target; with FUZZ_REPLAY a program that replays the files it is
// given, and each of them cut at every quarter. Buffers are exactly as large as the public header says, so
// that the sanitizers see every byte too many.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "STLCodeTrans.h"

namespace
{
using Exported = size_t(const char*, size_t, char*, size_t, int);

void Call(Exported* function, const std::string& source, size_t length, size_t room, size_t capacity,
          int code)
{
    std::vector<char> output(room);
    function(source.c_str(), length, output.data(), capacity, code);
}

// The header's tables, line by line.
void ConvertEveryWay(const std::string& text)
{
    const size_t n = text.size(), third = n / 3;
    for (const int code : {ENCODE_GBK, ENCODE_BIG5}) {
        Call(TQ_ToUnicode, text, n, 2 * n, 0, code);
        Call(TQ_ToUnicode, text, n, third + 1, third + 1, code);
        Call(TQ_ToUtf8, text, n, 3 * n + 1, 0, code);
        Call(TQ_ToUtf8, text, n, third + 2, third + 1, code);
        Call(TQ_ToGBK, text, n, n + 1, 0, code);
    }
    Call(TQ_ToUnicode, text, n, 4 * n + 2, 0, ENCODE_UTF8);
    Call(TQ_ToUtf8, text, n, third + 2, third + 1, ENCODE_UTF8);
    Call(TQ_ToGBK, text, n, 2 * n + 1, 0, ENCODE_UTF8);
    Call(TQ_ToUnicode, text, third, n + 1, n, ENCODE_UNICODE);
    Call(TQ_ToUtf8, text, n / 4, 3 * (n / 4) + 1, 0, ENCODE_UNICODE);
    Call(TQ_ToGBK, text, n / 2, 2 * (n / 2) + 2, 0, ENCODE_UNICODE);
}

// Each byte a node's field (small numbers, so that nodes meet), with the same bytes as the text.
void WalkDamagedModel(const std::string& bytes)
{
    std::string model(4 * MAPPING_ENTRIES, '\0');
    const auto append = [&](int field) { model.append(reinterpret_cast<const char*>(&field), sizeof field); };
    append(static_cast<int>(bytes.size() / 4));
    for (const char field : bytes) append(static_cast<signed char>(field));

    const int memory = memfd_create("model", 0);
    if (write(memory, model.data(), model.size()) == static_cast<ssize_t>(model.size()) &&
        CodeTrans_Initialize(("/proc/self/fd/" + std::to_string(memory)).c_str()) == 0)
        CodeTrans_CodeDetect(bytes.data(), bytes.size());
    close(memory);
    CodeTrans_Destroy();
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size)
{
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    WalkDamagedModel(bytes);
    CodeTrans_Initialize(CODETRANS_SOURCE_DIRECTORY "/Data/CodeTrans.model");
    ConvertEveryWay(bytes);
    CodeTrans_CodeDetect(bytes.data(), bytes.size());
    CodeTrans_Destroy();
    return 0;
}

#ifdef FUZZ_REPLAY
int main(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        std::ifstream file(argv[i], std::ios::binary);
        const std::vector<unsigned char> bytes{std::istreambuf_iterator<char>(file), {}};
        for (size_t quarter = 1; quarter <= 4; ++quarter)
            LLVMFuzzerTestOneInput(bytes.data(), bytes.size() * quarter / 4);
        printf("%s: %zu bytes\n", argv[i], bytes.size());
    }
    return argc > 1 ? 0 : 1;
}
#endif
