// Detects the encoding of standard input and writes the text in UTF-8 to standard output. Uses a wrapper
// class that you can copy into your program: the model is an object, texts are std::string, and buffers have
// the right size.
//
//     c++ -std=c++11 wrapper.cpp $(pkg-config --cflags --libs CodeTrans) -o wrapper
//     ./wrapper /usr/share/CodeTrans < old.txt
#include <CodeTrans.h>

#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>

// Only one object may exist at a time, because the library has one model per process.
class CodeTrans
{
public:
    explicit CodeTrans(const std::string& folder)
    {
        if (TQ_Init(folder.c_str(), nullptr) != 1) throw std::runtime_error(TQ_GetLastErrorMsg());
    }
    ~CodeTrans() { TQ_Exit(); }
    CodeTrans(const CodeTrans&) = delete;
    CodeTrans& operator=(const CodeTrans&) = delete;

    int Detect(const std::string& text) const { return TQ_CodeDetect(text.data(), text.size()); }

    // GBK and Big5 are converted to UTF-16LE first, which needs no locale.
    std::string ToUtf8(const std::string& text, int code) const
    {
        if (code == ENCODE_UTF8) return text;
        if (code == ENCODE_UNICODE) return Utf16ToUtf8(text);
        std::string units(2 * text.size(), '\0');
        units.resize(TQ_ToUnicode(text.data(), text.size(), &units[0], units.size(), code));
        return Utf16ToUtf8(units);
    }

private:
    // TQ_ToUtf8 reads four-byte units, up to the first zero unit.
    static std::string Utf16ToUtf8(const std::string& units)
    {
        std::string wide;
        for (size_t i = 0; i + 1 < units.size(); i += 2) wide.append(units, i, 2).append(2, '\0');
        const size_t count = wide.size() / 4;
        std::string out(3 * count + 1, '\0');
        out.resize(TQ_ToUtf8(wide.data(), count, &out[0], 0, ENCODE_UNICODE));
        return out;
    }
};

int main(int argc, char** argv)
{
    try {
        const CodeTrans library(argc > 1 ? argv[1] : "");
        const std::string text{std::istreambuf_iterator<char>(std::cin), {}};
        const int code = library.Detect(text);
        std::cout << library.ToUtf8(text, code);
        return code == ENCODE_UNKNOWN ? 1 : 0;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
