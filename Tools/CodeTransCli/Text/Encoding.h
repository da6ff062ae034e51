// The encodings by their names, and their byte-order marks.
#ifndef CODETRANSCLI_ENCODING_H
#define CODETRANSCLI_ENCODING_H

#include <CodeTrans.h>

#include <string>
#include <string_view>
#include <vector>

// How an encoding is read and written. ICONV: by the C library's iconv.
enum class Scheme { ASCII, PAIRS, UTF8, UTF16, UTF32, HZ, ICONV };

struct Encoding {
    std::string name;  // as it is shown, and as iconv knows it
    Scheme scheme;
    int code = ENCODE_UNKNOWN;  // the library's, where it has one
    bool bigEndian = false;
    std::string_view mark = {};  // the byte-order mark, or empty
    bool holdsAscii = true;      // ASCII text is the same bytes in it
};

// There is one object for each encoding, so that pointers can be compared.
extern const Encoding ASCII, GBK, GB18030, BIG5, UTF8, UTF16LE, UTF16BE, UTF32LE, UTF32BE, HZ, UTF7;

// The encoding with the library's code, or null for ENCODE_UNKNOWN.
const Encoding* EncodingOf(int code);

// "unknown" for null.
std::string NameOf(const Encoding* encoding);

// An encoding as the user names it.
struct NamedEncoding {
    const Encoding* encoding = nullptr;  // null: there is none of that name
    bool marked = false;                 // the name asks for a byte-order mark: utf-8-sig, utf-16, utf-32
};

// In any case; names that are not in the list below are looked for among iconv's.
NamedEncoding FindEncoding(const std::string& name);

// Each of the tool's own encodings with its names, the shown one first.
struct EncodingNames {
    const Encoding* encoding;
    std::vector<std::string> names;
};
const std::vector<EncodingNames>& KnownEncodings();

// The encoding whose byte-order mark `text` begins with, or null. UTF-32's are looked for before UTF-16's.
const Encoding* MarkedEncoding(std::string_view text);

#endif  // CODETRANSCLI_ENCODING_H
