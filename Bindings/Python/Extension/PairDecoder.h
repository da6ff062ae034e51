// Decodes GBK and Big5 by the tables of the model into Python strings.
#ifndef CODETRANS_PYTHON_PAIR_DECODER_H
#define CODETRANS_PYTHON_PAIR_DECODER_H

#define PY_SSIZE_T_CLEAN
#include <Python.h>

// A tuple of the text and the number of bytes decoded, or null with an exception set. `code` is ENCODE_GBK or
// ENCODE_BIG5; `errors` names a handler of Python's codecs, null is "strict". Unless `isFinal`, a character
// that is cut by the end is left.
PyObject* DecodePairs(int code, PyObject* data, const char* errors, bool isFinal);

#endif  // CODETRANS_PYTHON_PAIR_DECODER_H
