// The type codetrans.Detection: an answer that does not change, can be compared, hashed and pickled.
#include "DetectionType.h"

#include <structmember.h>

#include <cstddef>

namespace
{
struct Detection {
    PyObject_HEAD PyObject* encoding;
    int margin;
    char bom;
    char confident;
};

// Names of Python's codecs. Of these, gb18030 has all of GBK, and big5hkscs is the one for Big5 that differs
// least from the table of the model.
constexpr const char* NAME_TEXTS[NAMES] = {nullptr, "ascii", "gb18030", "big5hkscs", "utf-8", "utf-16-le"};

Name NameOf(const Answer& answer)
{
    if (answer.ascii) return NAME_ASCII;
    switch (answer.code) {
        case ENCODE_GBK:
            return NAME_GBK;
        case ENCODE_BIG5:
            return NAME_BIG5;
        case ENCODE_UTF8:
            return NAME_UTF8;
        case ENCODE_UNICODE:
            return NAME_UTF16LE;
        default:
            return NAME_NONE;
    }
}

PyObject* Make(PyTypeObject* type, const ModuleState& state, Name name, int margin, bool bom)
{
    auto* const made = PyObject_New(Detection, type);
    if (made == nullptr) return nullptr;
    made->encoding = state.names[name];
    Py_INCREF(made->encoding);
    made->margin = margin;
    made->bom = bom;
    made->confident = name == NAME_ASCII || margin >= ENOUGH_MARGIN;
    return reinterpret_cast<PyObject*>(made);
}

PyObject* Construct(PyTypeObject* type, PyObject* arguments, PyObject* keywords)
{
    static const char* s_names[] = {"encoding", "bom", "margin", nullptr};
    PyObject* encoding = nullptr;
    int bom = 0, margin = 0;
    if (!PyArg_ParseTupleAndKeywords(arguments, keywords, "Opi", const_cast<char**>(s_names), &encoding, &bom,
                                     &margin))
        return nullptr;
    if (margin < 0 || margin > MOST_MARGIN)
        return PyErr_Format(PyExc_ValueError, "margin must be from 0 to %d", MOST_MARGIN);
    const auto* const state = static_cast<ModuleState*>(PyType_GetModuleState(type));
    if (state == nullptr) return nullptr;
    for (int name = 0; name < NAMES; ++name) {
        const int equal = PyObject_RichCompareBool(state->names[name], encoding, Py_EQ);
        if (equal < 0) return nullptr;
        if (equal > 0) return Make(type, *state, static_cast<Name>(name), margin, bom != 0);
    }
    return PyErr_Format(PyExc_ValueError, "%R is not an encoding that is detected", encoding);
}

void Deallocate(PyObject* self)
{
    PyTypeObject* const type = Py_TYPE(self);
    Py_DECREF(reinterpret_cast<Detection*>(self)->encoding);
    PyObject_Free(self);
    Py_DECREF(type);
}

// The arguments that make an equal one.
PyObject* Arguments(PyObject* self)
{
    const auto* const detection = reinterpret_cast<Detection*>(self);
    return Py_BuildValue("(ONi)", detection->encoding, PyBool_FromLong(detection->bom), detection->margin);
}

PyObject* Represent(PyObject* self)
{
    const auto* const detection = reinterpret_cast<Detection*>(self);
    return PyUnicode_FromFormat("Detection(encoding=%R, bom=%s, margin=%d)", detection->encoding,
                                detection->bom ? "True" : "False", detection->margin);
}

PyObject* Compare(PyObject* self, PyObject* other, int operation)
{
    if (Py_TYPE(self) != Py_TYPE(other) || (operation != Py_EQ && operation != Py_NE))
        Py_RETURN_NOTIMPLEMENTED;
    const auto &a = *reinterpret_cast<Detection*>(self), &b = *reinterpret_cast<Detection*>(other);
    const bool equal = a.encoding == b.encoding && a.bom == b.bom && a.margin == b.margin;
    return PyBool_FromLong(equal == (operation == Py_EQ));
}

Py_hash_t Hash(PyObject* self)
{
    PyObject* const arguments = Arguments(self);
    const Py_hash_t hash = arguments != nullptr ? PyObject_Hash(arguments) : -1;
    Py_XDECREF(arguments);
    return hash;
}

PyObject* Reduce(PyObject* self, PyObject*)
{
    return Py_BuildValue("(ON)", Py_TYPE(self), Arguments(self));
}

PyMethodDef s_methods[] = {{"__reduce__", Reduce, METH_NOARGS, nullptr}, {nullptr, nullptr, 0, nullptr}};

PyMemberDef s_members[] = {
    {"encoding", T_OBJECT, offsetof(Detection, encoding), READONLY,
     "The name of a codec of Python: 'ascii', 'gb18030' for GBK and GB18030, 'big5hkscs' for Big5,\n"
     "'utf-8' or 'utf-16-le'. None if no encoding was detected."},
    {"bom", T_BOOL, offsetof(Detection, bom), READONLY, "Whether the text begins with a byte-order mark."},
    {"margin", T_INT, offsetof(Detection, margin), READONLY,
     "How clear the answer is, from 0 to 100: how far its score is ahead of the next encoding's.\n"
     "100 if the text leaves no choice; 0 if no encoding was detected."},
    {"confident", T_BOOL, offsetof(Detection, confident), READONLY,
     "Whether the margin is at least ENOUGH_MARGIN, or the text is plain ASCII, which leaves no doubt\n"
     "about its characters."},
    {nullptr, 0, 0, 0, nullptr}};

constexpr char DOCUMENTATION[] =
    "Detection(encoding, bom, margin)\n--\n\n"
    "What `detect` found out. It does not change; it can be compared, hashed and pickled.";

PyType_Slot s_slots[] = {{Py_tp_new, reinterpret_cast<void*>(Construct)},
                         {Py_tp_dealloc, reinterpret_cast<void*>(Deallocate)},
                         {Py_tp_repr, reinterpret_cast<void*>(Represent)},
                         {Py_tp_richcompare, reinterpret_cast<void*>(Compare)},
                         {Py_tp_hash, reinterpret_cast<void*>(Hash)},
                         {Py_tp_methods, s_methods},
                         {Py_tp_members, s_members},
                         {Py_tp_doc, const_cast<char*>(DOCUMENTATION)},
                         {0, nullptr}};

PyType_Spec s_spec = {"codetrans.Detection", sizeof(Detection), 0, Py_TPFLAGS_DEFAULT, s_slots};

ModuleState* StateOf(PyObject* module)
{
    return static_cast<ModuleState*>(PyModule_GetState(module));
}
}  // namespace

bool AddDetectionType(PyObject* module)
{
    ModuleState* const state = StateOf(module);
    for (int i = 0; i < NAMES; ++i) {
        if (NAME_TEXTS[i] == nullptr) Py_INCREF(Py_None);
        state->names[i] = NAME_TEXTS[i] != nullptr ? PyUnicode_InternFromString(NAME_TEXTS[i]) : Py_None;
        if (state->names[i] == nullptr) return false;
    }
    state->detectionType = PyType_FromModuleAndSpec(module, &s_spec, nullptr);
    if (state->detectionType == nullptr) return false;
    return PyModule_AddType(module, reinterpret_cast<PyTypeObject*>(state->detectionType)) == 0;
}

int TraverseState(PyObject* module, visitproc visit, void* arg)
{
    Py_VISIT(StateOf(module)->detectionType);
    return 0;
}

int ClearState(PyObject* module)
{
    ModuleState* const state = StateOf(module);
    Py_CLEAR(state->detectionType);
    for (PyObject*& name : state->names) Py_CLEAR(name);
    return 0;
}

PyObject* NewDetection(PyObject* module, const Answer& answer, bool marked)
{
    const ModuleState* const state = StateOf(module);
    return Make(reinterpret_cast<PyTypeObject*>(state->detectionType), *state, NameOf(answer), answer.margin,
                marked);
}
