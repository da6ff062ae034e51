// The type codetrans.Detection, and what the module keeps for it.
#ifndef CODETRANS_PYTHON_DETECTION_TYPE_H
#define CODETRANS_PYTHON_DETECTION_TYPE_H

#define PY_SSIZE_T_CLEAN
#include <Margin.h>
#include <Python.h>

enum Name { NAME_NONE, NAME_ASCII, NAME_GBK, NAME_BIG5, NAME_UTF8, NAME_UTF16LE, NAMES };

// Made once: a Detection holds one of the names, so that a call of `detect` makes no string.
struct ModuleState {
    PyObject* detectionType;
    PyObject* names[NAMES];
};

// False, with an exception set, where there is no memory.
bool AddDetectionType(PyObject* module);
int TraverseState(PyObject* module, visitproc visit, void* arg);
int ClearState(PyObject* module);

// A new reference.
PyObject* NewDetection(PyObject* module, const Answer& answer, bool marked);

#endif  // CODETRANS_PYTHON_DETECTION_TYPE_H
