// Whole-file conversion: read, detect, convert in memory, write a byte-order mark and the result.
//
// The output buffer is five times the source, fixed in advance, and the converters that look at no capacity
// rely on that. Those for UTF-16LE also read and write past the stated lengths (up to the capacity, or four
// bytes for each source byte), so a UTF-16LE source is padded with zero bytes to the capacity and the buffer
// has one byte more: what they touch beyond the lengths is always ours.
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "Bytes.h"
#include "STLCodeTrans.h"
#include "Utility.h"
#include "global_linux.h"

namespace
{
constexpr int64_t FAILED = -1;

struct Target {
    int code;
    unsigned long (*convert)(int, char const*, unsigned long, char*, unsigned long&);
    const char* byteOrderMark;
};

constexpr Target TARGETS[] = {
    {ENCODE_UTF8, CodeTrans_ToUtf8, UTF8_BYTE_ORDER_MARK},
    {ENCODE_GBK, CodeTrans_ToAnsi, ""},
    {ENCODE_UNICODE, CodeTrans_ToUnicode, "\xFF\xFE"},
};

const Target* FindTarget(int code)
{
    for (const Target& target : TARGETS)
        if (target.code == code) return &target;
    return nullptr;
}

// One conversion's source, which takes the content over, and zero-filled memory for its output.
struct Buffers {
    int code;
    size_t length;
    size_t capacity;
    std::string content;
    std::unique_ptr<char[], CFree> padded;
    std::unique_ptr<char[], CFree> output;

    explicit Buffers(std::string&& text)
        : code(TQ_CodeDetect(text.data(), text.size())),
          length(text.size()),
          capacity(length * 5 + 1),
          content(std::move(text)),
          output(ZeroedScratch<char>(capacity + 1))
    {
        if (code != ENCODE_UNICODE) return;
        padded = ZeroedScratch<char>(capacity + 1);
        memcpy(padded.get(), content.data(), length);
        std::string().swap(content);
    }

    int64_t Convert(const Target& target)
    {
        const char* const source = padded != nullptr ? padded.get() : content.c_str();
        unsigned long room = capacity;
        return static_cast<int64_t>(target.convert(code, source, length, output.get(), room));
    }
};

int64_t FailWriting(const char* sDstFile)
{
    ReportError(std::string("Fail writing file ") + sDstFile);
    return FAILED;
}

int64_t ConvertFile(const char* sSrcFile, const char* sDstFile, int nTargetCode)
{
    std::string source, destination, content;
    GetAnsiFilename(sSrcFile, source, false);
    GetAnsiFilename(sDstFile, destination, false);
    ReadFile(source.c_str(), content, 0, 0, true);
    if (content.empty()) return FAILED;

    // Opened before any work is done, but emptied only once that has succeeded: a destination that cannot be
    // opened costs no conversion, and one that was there stays as it was when memory is short.
    const File file(OpenToOverwrite(destination.c_str()));
    if (file == nullptr) return FailWriting(sDstFile);
    Buffers buffers(std::move(content));
    // An unknown target is no failure: the destination is left empty.
    const Target* const target = FindTarget(nTargetCode);
    const int64_t result = target != nullptr ? buffers.Convert(*target) : 0;

    Truncate(file.get());
    if (target != nullptr && result != FAILED) {
        fwrite(target->byteOrderMark, 1, strlen(target->byteOrderMark), file.get());
        fwrite(buffers.output.get(), 1, static_cast<size_t>(result), file.get());
    }
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
