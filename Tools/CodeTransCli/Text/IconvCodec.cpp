// iconv stops at what it cannot convert, and says whether the text ended there. So its decoder needs no
// second look. What its encoder wrote is read back all the same: some encodings of iconv's write characters
// that they do not read again.
#include "IconvCodec.h"

#include <iconv.h>

#include <array>
#include <cerrno>
#include <stdexcept>

namespace
{
class Handle
{
public:
    Handle(const std::string& to, const std::string& from) : m_handle(iconv_open(to.c_str(), from.c_str()))
    {
        if (m_handle == iconv_t(-1)) throw std::runtime_error("cannot convert from " + from + " to " + to);
    }
    ~Handle() { iconv_close(m_handle); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    // Appends to `out` and returns the bytes read; `error` is 0, EILSEQ or EINVAL.
    template <typename String>
    size_t Convert(std::string_view in, String& out, int& error)
    {
        char* from = const_cast<char*>(in.data());  // iconv only reads it
        size_t left = in.size();
        error = 0;
        while (left > 0 && error == 0) {
            std::array<typename String::value_type, 4096> buffer;
            char* to = reinterpret_cast<char*>(buffer.data());
            size_t room = sizeof buffer;
            if (iconv(m_handle, &from, &left, &to, &room) == static_cast<size_t>(-1) && errno != E2BIG)
                error = errno;
            out.append(buffer.data(), (sizeof buffer - room) / sizeof(typename String::value_type));
        }
        return in.size() - left;
    }

    // What brings the output back to its first state.
    void Finish(std::string& out)
    {
        std::array<char, 64> buffer;
        char* to = buffer.data();
        size_t room = buffer.size();
        iconv(m_handle, nullptr, nullptr, &to, &room);
        out.append(buffer.data(), buffer.size() - room);
    }

    void Reset() { iconv(m_handle, nullptr, nullptr, nullptr, nullptr); }

private:
    iconv_t m_handle;
};

std::string_view Bytes(std::u16string_view units)
{
    return {reinterpret_cast<const char*>(units.data()), 2 * units.size()};
}

class IconvDecoder : public Decoder
{
public:
    explicit IconvDecoder(const Encoding& encoding) : m_handle("UTF-16LE", encoding.name) {}

    size_t Read(std::string_view text, std::u16string& units) override
    {
        return m_handle.Convert(text, units, m_error);
    }

    // Read was here before. Where the encoding has states, only one who comes from the start can tell.
    Character First(std::string_view) override
    {
        return {1, 0, m_error == EINVAL ? Fault::CUT : Fault::MALFORMED};
    }

protected:
    bool ReadPiece(std::string_view, std::u16string&) override { return false; }
    size_t PieceEnd(std::string_view, size_t size) const override { return size; }

private:
    Handle m_handle;
    int m_error = 0;
};

class IconvEncoder : public Encoder
{
public:
    explicit IconvEncoder(const Encoding& encoding)
        : m_write(encoding.name, "UTF-16LE"), m_read("UTF-16LE", encoding.name)
    {
    }

    size_t Write(std::u16string_view units, std::string& bytes) override
    {
        const size_t had = bytes.size();
        int error = 0;
        const size_t used = m_write.Convert(Bytes(units), bytes, error) / 2;
        m_write.Finish(bytes);  // so that each piece can be done again by itself
        m_back.clear();
        m_read.Convert(std::string_view(bytes).substr(had), m_back, error);
        if (m_back != units.substr(0, used)) return WriteSingly(units, had, bytes);
        return used;
    }

protected:
    bool WritePiece(std::u16string_view, std::string&) override { return false; }

    bool WriteOne(char32_t codePoint, std::string& bytes) override
    {
        std::u16string units;
        AppendUnits(units, codePoint);
        return Write(units, bytes) == units.size();
    }

private:
    // Up to the character that does not come back.
    size_t WriteSingly(std::u16string_view units, size_t had, std::string& bytes)
    {
        bytes.resize(had);
        m_write.Reset();
        m_read.Reset();
        if (units.size() == FirstOfUnits(units).length) return 0;
        size_t used = 0;
        while (used < units.size()) {
            const size_t length = FirstOfUnits(units.substr(used)).length;
            if (Write(units.substr(used, length), bytes) != length) break;
            used += length;
        }
        return used;
    }

    Handle m_write, m_read;
    std::u16string m_back;
};
}  // namespace

std::unique_ptr<Decoder> MakeIconvDecoder(const Encoding& encoding)
{
    return std::make_unique<IconvDecoder>(encoding);
}

std::unique_ptr<Encoder> MakeIconvEncoder(const Encoding& encoding)
{
    return std::make_unique<IconvEncoder>(encoding);
}
