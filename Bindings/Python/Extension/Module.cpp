// The module codetrans._engine: detection, and the decoders of GBK and Big5, for the Python package.
//
// Only the engine is linked, not the exported functions: importing the module writes no log and does not
// touch the locale. The model lies beside the module and is mapped once for the process.
#include <Margin.h>

#include <algorithm>
#include <mutex>
#include <string>

#include "BytesView.h"
#include "DetectionType.h"
#include "PairDecoder.h"

namespace
{
// As AnswerFor. The lock is given up only for what is behind the head of a text, which decides most of them.
Answer AnswerOfText(const BytesView& bytes)
{
    const Py_ssize_t head = std::min(bytes.Size(), LOCKED);
    WalkPosition position;
    WalkOn(bytes.Data(), static_cast<unsigned long>(head), position);
    if (head < bytes.Size() && position.scores.decidedCode == 0) {
        Py_BEGIN_ALLOW_THREADS;
        WalkOn(bytes.Data() + head, static_cast<unsigned long>(bytes.Size() - head), position);
        Py_END_ALLOW_THREADS;
    }
    return AnswerOf(position.scores);
}

PyObject* Detect(PyObject* module, PyObject* data)
{
    const BytesView bytes(data);
    if (!bytes) return nullptr;
    const Answer answer = AnswerOfText(bytes);
    const bool marked = MarkLength(answer.code, bytes.Data(), static_cast<unsigned long>(bytes.Size())) != 0;
    return NewDetection(module, answer, marked);
}

template <int CODE>
PyObject* Decode(PyObject*, PyObject* arguments)
{
    PyObject* data = nullptr;
    const char* errors = nullptr;
    int isFinal = 0;
    if (!PyArg_ParseTuple(arguments, "O|zp", &data, &errors, &isFinal)) return nullptr;
    return DecodePairs(CODE, data, errors, isFinal != 0);
}

// The model beside the file of the module.
bool LoadModel(PyObject* module)
{
    static std::once_flag s_once;
    static int s_result = 0;
    PyObject* const file = PyModule_GetFilenameObject(module);
    PyObject* const name = file != nullptr ? PyUnicode_EncodeFSDefault(file) : nullptr;
    Py_XDECREF(file);
    if (name == nullptr) return false;
    std::string path = PyBytes_AsString(name);
    Py_DECREF(name);
    const size_t slash = path.rfind('/');
    path.replace(slash == std::string::npos ? 0 : slash + 1, std::string::npos, "CodeTrans.model");
    std::call_once(s_once, [&path] { s_result = CodeTrans_Map(path.c_str()); });
    if (s_result != 0) PyErr_Format(PyExc_ImportError, "cannot load the model %s", path.c_str());
    return s_result == 0;
}

int Execute(PyObject* module)
{
    return LoadModel(module) && AddDetectionType(module) &&
                   PyModule_AddIntConstant(module, "ENOUGH_MARGIN", ENOUGH_MARGIN) == 0
               ? 0
               : -1;
}

PyMethodDef s_methods[] = {
    {"detect", Detect, METH_O,
     "detect($module, data, /)\n--\n\n"
     "Detect the encoding of bytes, bytearray, memoryview, mmap or any other contiguous buffer.\n\n"
     "Return a Detection. The buffer is read in place, and only as far as it is needed to decide.\n"
     "Raise TypeError for an object that is no buffer (such as str), and BufferError for a\n"
     "memoryview that is not contiguous. Other threads run while a long text is read; they must\n"
     "not cut short the file behind an mmap."},
    {"gbk_decode", Decode<ENCODE_GBK>, METH_VARARGS,
     "gbk_decode($module, data, errors=None, final=False, /)\n--\n\n"
     "Decode GBK or GB18030. Return the str and the number of bytes that were decoded: without\n"
     "`final`, a character that is cut by the end is left."},
    {"big5_decode", Decode<ENCODE_BIG5>, METH_VARARGS,
     "big5_decode($module, data, errors=None, final=False, /)\n--\n\n"
     "Decode Big5. Return what gbk_decode returns."},
    {nullptr, nullptr, 0, nullptr}};

PyModuleDef_Slot s_slots[] = {{Py_mod_exec, reinterpret_cast<void*>(Execute)}, {0, nullptr}};

PyModuleDef s_module = {PyModuleDef_HEAD_INIT, "codetrans._engine", nullptr,
                        sizeof(ModuleState),   s_methods,           s_slots,
                        TraverseState,         ClearState,          nullptr};
}  // namespace

PyMODINIT_FUNC PyInit__engine()
{
    return PyModuleDef_Init(&s_module);
}
