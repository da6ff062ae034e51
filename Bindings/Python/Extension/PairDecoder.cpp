// Plain characters are decoded in runs, without the lock of the interpreter where a run is long. Between
// runs stands what the table lacks: for GBK, Python's codec gb18030 has the rest of GB18030; all else is a
// fault, and goes to the handler of errors.
//
// A fault takes one byte, or two where the second is no ASCII: what follows it can be trusted no less than
// what precedes, and a line end, a quote or a bracket is never lost with a stray byte before it.
#include "PairDecoder.h"

#include <STLCodeTrans.h>

#include <algorithm>
#include <memory>

#include "BytesView.h"

namespace
{
constexpr unsigned short NO_CHARACTER = 0xFFFD;  // in the tables
constexpr unsigned short EURO = 0x20AC;
constexpr unsigned char EURO_IN_GBK = 0x80;  // a single byte

bool Between(unsigned value, unsigned first, unsigned last)
{
    return value >= first && value <= last;
}

struct Release {
    void operator()(PyObject* object) const { Py_DECREF(object); }
    void operator()(unsigned short* units) const { PyMem_Free(units); }
};
using Object = std::unique_ptr<PyObject, Release>;

struct Encoding {
    int code;
    const char* name;
    const unsigned short* table;

    // The table has NO_CHARACTER for all bytes that are no lead or trail bytes, but not for trail bytes below
    // 40, which share the entries of 40.
    unsigned short Unit(unsigned char lead, unsigned char trail) const
    {
        return trail < 0x40 ? NO_CHARACTER : table[PairIndex(lead, trail)];
    }
};

struct Run {
    Py_ssize_t read = 0, written = 0;
};

// Up to the first byte that begins no character of the table. `units` has room for a unit a byte.
Run DecodeRun(const Encoding& encoding, const unsigned char* text, Py_ssize_t size, unsigned short* units)
{
    Run run;
    while (run.read < size) {
        const unsigned char lead = text[run.read];
        unsigned short unit = lead;
        Py_ssize_t length = 1;
        if (lead == EURO_IN_GBK && encoding.code == ENCODE_GBK) {
            unit = EURO;
        } else if (lead >= 0x80) {
            if (run.read + 1 == size) break;
            unit = encoding.Unit(lead, text[run.read + 1]);
            if (unit == NO_CHARACTER) break;
            length = 2;
        }
        units[run.written++] = unit;
        run.read += length;
    }
    return run;
}

class PairDecoder
{
public:
    PairDecoder(const Encoding& encoding, const BytesView& bytes, const char* errors, bool isFinal)
        : m_encoding(encoding),
          m_pText(reinterpret_cast<const unsigned char*>(bytes.Data())),
          m_nSize(bytes.Size()),
          m_errors(errors),
          m_isFinal(isFinal)
    {
    }

    PyObject* Decode()
    {
        m_units.reset(static_cast<unsigned short*>(PyMem_Malloc(2 * static_cast<size_t>(m_nSize) + 2)));
        m_pieces.reset(PyList_New(0));
        if (m_units == nullptr) return PyErr_NoMemory();
        if (m_pieces == nullptr) return nullptr;
        while (m_nRead < m_nSize) {
            ReadRun();
            if (m_nRead == m_nSize) break;
            const Py_ssize_t length = ReadRare();
            if (length < 0) return nullptr;
            m_nRead += length;
            if (length > 0) continue;
            if (IsCut() && !m_isFinal) break;
            if (!Flush() || !HandleFault()) return nullptr;
        }
        if (!Flush()) return nullptr;
        const Object none(PyUnicode_New(0, 0));
        if (none == nullptr) return nullptr;
        PyObject* const text = PyUnicode_Join(none.get(), m_pieces.get());
        return text != nullptr ? Py_BuildValue("(Nn)", text, m_nRead) : nullptr;
    }

private:
    unsigned Byte(Py_ssize_t ahead) const
    {
        return m_nRead + ahead < m_nSize ? m_pText[m_nRead + ahead] : 0U;
    }

    // Gives up the lock only for what is behind a long run: there may be a fault in every other byte.
    void ReadRun()
    {
        const Py_ssize_t end = m_nRead + LOCKED;
        ReadRunUpTo(std::min(end, m_nSize));
        if (m_nRead + 1 < end || end >= m_nSize) return;
        Py_BEGIN_ALLOW_THREADS;
        ReadRunUpTo(m_nSize);
        Py_END_ALLOW_THREADS;
    }

    void ReadRunUpTo(Py_ssize_t end)
    {
        const Run run = DecodeRun(m_encoding, m_pText + m_nRead, end - m_nRead, m_units.get() + m_nUnits);
        m_nRead += run.read;
        m_nUnits += run.written;
    }

    bool IsLead() const { return Between(Byte(0), 0x81, 0xFE); }
    bool BeginsFour() const { return m_encoding.code == ENCODE_GBK && Between(Byte(1), 0x30, 0x39); }

    // Whether more bytes could make a character of those that are left.
    bool IsCut() const
    {
        const Py_ssize_t left = m_nSize - m_nRead;
        if (!IsLead() || left > 3) return false;
        if (left == 1) return true;
        return BeginsFour() && (left == 2 || Between(Byte(2), 0x81, 0xFE));
    }

    // A character that Python's gb18030 has. Returns its length, 0 where there is none, -1 for an exception.
    Py_ssize_t ReadRare()
    {
        if (m_encoding.code != ENCODE_GBK || !IsLead() || m_nSize - m_nRead < 2) return 0;
        const Py_ssize_t length = BeginsFour() ? 4 : 2;
        if (length > m_nSize - m_nRead) return 0;
        const Object text(
            PyUnicode_Decode(reinterpret_cast<const char*>(m_pText + m_nRead), length, "gb18030", "strict"));
        if (text == nullptr) {
            if (!PyErr_ExceptionMatches(PyExc_UnicodeDecodeError)) return -1;
            PyErr_Clear();
            return 0;
        }
        if (PyUnicode_GetLength(text.get()) != 1) return 0;
        const Py_UCS4 character = PyUnicode_ReadChar(text.get(), 0);
        if (character < 0x10000) {
            Put(character);
        } else {
            Put(Py_UNICODE_HIGH_SURROGATE(character));
            Put(Py_UNICODE_LOW_SURROGATE(character));
            m_hasSurrogates = true;
        }
        return length;
    }

    void Put(Py_UCS4 unit) { m_units[static_cast<size_t>(m_nUnits++)] = static_cast<unsigned short>(unit); }

    // Makes a piece of text of the units so far.
    bool Flush()
    {
        if (m_nUnits == 0) return true;
        int order = PY_LITTLE_ENDIAN ? -1 : 1;
        return Add(m_hasSurrogates
                       ? PyUnicode_DecodeUTF16(reinterpret_cast<const char*>(m_units.get()), 2 * m_nUnits,
                                               "strict", &order)
                       : PyUnicode_FromKindAndData(PyUnicode_2BYTE_KIND, m_units.get(), m_nUnits));
    }

    bool Add(PyObject* newPiece)
    {
        const Object piece(newPiece);
        m_nUnits = 0;
        m_hasSurrogates = false;
        return piece != nullptr && PyList_Append(m_pieces.get(), piece.get()) == 0;
    }

    // Adds what the handler of errors puts in the place of the fault, and goes on where it says.
    bool HandleFault()
    {
        const bool cut = IsCut();
        const Py_ssize_t end = m_nRead + (IsLead() && Byte(1) >= 0x80 ? 2 : 1);
        const char* const reason = cut ? "incomplete multibyte sequence" : "illegal multibyte sequence";
        if (!DescribeFault(end, reason)) return false;
        if (m_handler == nullptr) m_handler.reset(PyCodec_LookupError(m_errors));
        if (m_handler == nullptr) return false;
        const Object answer(PyObject_CallFunctionObjArgs(m_handler.get(), m_exception.get(), nullptr));
        if (answer == nullptr) return false;

        PyObject* text = nullptr;
        Py_ssize_t position = 0;
        if (!PyTuple_Check(answer.get()) || !PyArg_ParseTuple(answer.get(), "Un", &text, &position)) {
            PyErr_SetString(PyExc_TypeError, "decoding error handler must return (str, int) tuple");
            return false;
        }
        if (position < 0) position += m_nSize;
        if (position < 0 || position > m_nSize) {
            PyErr_Format(PyExc_IndexError, "position %zd from error handler out of bounds", position);
            return false;
        }
        m_nRead = position;
        Py_INCREF(text);
        return Add(text);
    }

    // One exception serves all faults, since it holds a copy of the bytes.
    bool DescribeFault(Py_ssize_t end, const char* reason)
    {
        if (m_exception == nullptr) {
            m_exception.reset(PyUnicodeDecodeError_Create(
                m_encoding.name, reinterpret_cast<const char*>(m_pText), m_nSize, m_nRead, end, reason));
            return m_exception != nullptr;
        }
        return PyUnicodeDecodeError_SetStart(m_exception.get(), m_nRead) == 0 &&
               PyUnicodeDecodeError_SetEnd(m_exception.get(), end) == 0 &&
               PyUnicodeDecodeError_SetReason(m_exception.get(), reason) == 0;
    }

    const Encoding& m_encoding;
    const unsigned char* m_pText;
    Py_ssize_t m_nSize;
    const char* m_errors;
    bool m_isFinal;
    Py_ssize_t m_nRead = 0, m_nUnits = 0;
    bool m_hasSurrogates = false;  // among the units
    std::unique_ptr<unsigned short[], Release> m_units;
    Object m_pieces, m_exception, m_handler;
};
}  // namespace

PyObject* DecodePairs(int code, PyObject* data, const char* errors, bool isFinal)
{
    const Encoding gbk = {ENCODE_GBK, "codetrans-gbk", g_mapGBKToUnicode};
    const Encoding big5 = {ENCODE_BIG5, "codetrans-big5", g_mapBig5ToUnicode};
    const BytesView bytes(data);
    return bytes ? PairDecoder(code == ENCODE_GBK ? gbk : big5, bytes, errors, isFinal).Decode() : nullptr;
}
