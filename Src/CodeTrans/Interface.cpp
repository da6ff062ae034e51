// The exported functions that need no file of the caller's: one call each into the engine or the runtime
// support.
//
// What is decided here: where the model lies, the argument order (the engine takes the encoding first and the
// length by reference), and that no exception leaves the library. Memory that runs out inside a call becomes
// the result that its header entry names.
#include <new>

#include "Global.h"
#include "STLCodeTrans.h"
#include "Utility.h"

namespace
{
using EngineConversion = unsigned long(int, char const*, unsigned long, char*, unsigned long&);

// The engine overwrites the length; the caller's own capacity stays as it was.
size_t Convert(EngineConversion engine, const char* pSrc, size_t nSrcLen, char* pDst, size_t nDstSize,
               int nSrcCode)
{
    try {
        unsigned long length = nDstSize;
        return engine(nSrcCode, pSrc, nSrcLen, pDst, length);
    } catch (const std::bad_alloc&) {
        return 0;
    }
}
}  // namespace

int TQ_Init(const char* sInitDir, const char* /*sReserved*/)
{
    constexpr int LOADED = 1;
    constexpr int NOT_LOADED = -2;
    try {
        GetDefaultPath(sInitDir);
        // A directory that ends in "/" gives a doubled separator, which the file system takes as one.
        g_sDataPath = g_sDefaultDir + "/" + "Data";
        const std::string modelPath = g_sDataPath + "/CodeTrans.model";
        if (CodeTrans_Initialize(modelPath.c_str()) == 0) return LOADED;
        ReportError(modelPath + " load failure!");
    } catch (const std::bad_alloc&) {
    }
    return NOT_LOADED;
}

void TQ_Exit(void)
{
    CodeTrans_Destroy();
}

const char* TQ_GetLastErrorMsg(void)
{
    try {
        return GetLastErrorMsg();
    } catch (const std::bad_alloc&) {
        return "";
    }
}

int TQ_CodeDetect(const char* pSrc, size_t nSrcLen)
{
    return CodeTrans_CodeDetect(pSrc, nSrcLen);
}

size_t TQ_ToUnicode(const char* pSrc, size_t nSrcLen, char* pDst, size_t nDstSize, int nSrcCode)
{
    return Convert(CodeTrans_ToUnicode, pSrc, nSrcLen, pDst, nDstSize, nSrcCode);
}

size_t TQ_ToUtf8(const char* pSrc, size_t nSrcLen, char* pDst, size_t nDstSize, int nSrcCode)
{
    return Convert(CodeTrans_ToUtf8, pSrc, nSrcLen, pDst, nDstSize, nSrcCode);
}

size_t TQ_ToGBK(const char* pSrc, size_t nSrcLen, char* pDst, size_t nDstSize, int nSrcCode)
{
    return Convert(CodeTrans_ToAnsi, pSrc, nSrcLen, pDst, nDstSize, nSrcCode);
}
