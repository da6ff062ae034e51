// The bytes of a Python object with a buffer, held for as long as the view lives and never copied.
#ifndef CODETRANS_PYTHON_BYTES_VIEW_H
#define CODETRANS_PYTHON_BYTES_VIEW_H

#define PY_SSIZE_T_CLEAN
#include <Python.h>

// How much is read while the lock of the interpreter is held. To give it up costs nothing by itself, but to
// get it back may take 5 ms where another thread computes: as long as to read a mebibyte.
constexpr Py_ssize_t LOCKED = 65536;

class BytesView
{
public:
    // Without a contiguous buffer, the view is false and a Python exception is set.
    explicit BytesView(PyObject* object) : m_held(PyObject_GetBuffer(object, &m_buffer, PyBUF_SIMPLE) == 0) {}
    ~BytesView()
    {
        if (m_held) PyBuffer_Release(&m_buffer);
    }
    BytesView(const BytesView&) = delete;
    BytesView& operator=(const BytesView&) = delete;

    explicit operator bool() const { return m_held; }
    const char* Data() const { return static_cast<const char*>(m_buffer.buf); }
    Py_ssize_t Size() const { return m_buffer.len; }

private:
    Py_buffer m_buffer;
    bool m_held;
};

#endif  // CODETRANS_PYTHON_BYTES_VIEW_H
