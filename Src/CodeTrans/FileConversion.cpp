// Whole-file conversion: read, detect, convert in memory, write a byte-order mark and the result.
//
// The output buffer is five times the source, fixed in advance, and the converters that look at no capacity
// rely on that. Some of them also read and write past the stated lengths (up to the capacity, or four bytes
// for each source byte, from a UTF-16LE source), so the source handed to them is padded with zero bytes to
// the capacity and the buffer has one byte more: what they touch beyond the lengths is always ours.
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "Bytes.h"
#include "STLCodeTrans.h"
#include "Utility.h"

namespace
{
constexpr int64_t FAILED = -1;

struct Target {
    int code;
    size_t (*convert)(const char*, size_t, char*, size_t, int);
    const char* byteOrderMark;
};

constexpr Target TARGETS[] = {
    {ENCODE_UTF8, TQ_ToUtf8, UTF8_BYTE_ORDER_MARK},
    {ENCODE_GBK, TQ_ToGBK, ""},
    {ENCODE_UNICODE, TQ_ToUnicode, "\xFF\xFE"},
};

const Target* FindTarget(int code)
{
    for (const Target& target : TARGETS)
        if (target.code == code) return &target;
    return nullptr;
}

// Zero-filled memory for one conversion of n source bytes.
struct Buffers {
    size_t capacity;
    std::unique_ptr<char[], CFree> source;
    std::unique_ptr<char[], CFree> output;

    explicit Buffers(const std::string& content)
        : capacity(content.size() * 5 + 1),
          source(ZeroedScratch<char>(capacity + 1)),
          output(ZeroedScratch<char>(capacity + 1))
    {
        memcpy(source.get(), content.data(), content.size());
    }
};

int64_t FailWriting(const char* sDstFile)
{
    g_sLastErrorMessage = std::string("Fail writing file ") + sDstFile;
    WriteError(g_sLastErrorMessage, nullptr);
    return FAILED;
}

// The content of the source file with its zero bytes removed; empty on failure, which is then reported.
std::string ReadSource(const char* sSrcFile)
{
    std::string name, content;
    GetAnsiFilename(sSrcFile, name, false);
    ReadFile(name.c_str(), content, 0, 0, true);
    return content;
}

int64_t WriteConverted(FILE* file, const Target& target, const Buffers& buffers, size_t length)
{
    const size_t converted =
        target.convert(buffers.source.get(), length, buffers.output.get(), buffers.capacity, ENCODE_UNKNOWN);
    const auto result = static_cast<int64_t>(converted);
    if (result == FAILED) return FAILED;
    fwrite(target.byteOrderMark, 1, strlen(target.byteOrderMark), file);
    fwrite(buffers.output.get(), 1, converted, file);
    return result;
}

int64_t ConvertFile(const char* sSrcFile, const char* sDstFile, int nTargetCode)
{
    std::string destination;
    GetAnsiFilename(sDstFile, destination, false);
    std::string content = ReadSource(sSrcFile);
    const size_t length = content.size();
    if (length == 0) return FAILED;

    // Before the destination is opened, so that it stays as it was when memory is short.
    const Buffers buffers(content);
    std::string().swap(content);

    FILE* const file = fopen(destination.c_str(), "wb");
    if (file == nullptr) return FailWriting(sDstFile);
    // An unknown target is no failure: the destination is left empty.
    const Target* const target = FindTarget(nTargetCode);
    const int64_t result = target != nullptr ? WriteConverted(file, *target, buffers, length) : 0;
    fclose(file);
    return result;
}
}  // namespace

int64_t TQ_ToFile(const char* sSrcFile, const char* sDstFile, int nTargetCode)
{
    if (sSrcFile == nullptr) sSrcFile = "";
    if (sDstFile == nullptr) sDstFile = "";
    try {
        try {
            return ConvertFile(sSrcFile, sDstFile, nTargetCode);
        } catch (const std::bad_alloc&) {
            return FailWriting(sDstFile);
        }
    } catch (const std::bad_alloc&) {
        return FAILED;  // not even the message found room
    }
}

int64_t TQ_ToGBKFile(const char* sSrcFile, const char* sDstFile)
{
    return TQ_ToFile(sSrcFile, sDstFile, ENCODE_GBK);
}

int64_t TQ_ToUnicodeFile(const char* sSrcFile, const char* sDstFile)
{
    return TQ_ToFile(sSrcFile, sDstFile, ENCODE_UNICODE);
}

int64_t TQ_ToUtf8File(const char* sSrcFile, const char* sDstFile)
{
    return TQ_ToFile(sSrcFile, sDstFile, ENCODE_UTF8);
}
