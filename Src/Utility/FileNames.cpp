// Directories and file names: callers pass UTF-8, the file system may hold names in the local encoding.
//
// A name that exists as given is always used as given; only a missing one is tried in its converted form.
// Nothing is normalised: relative stays relative, trailing slashes stay.
#include "STLCodeTrans.h"
#include "Utility.h"
#include "global_linux.h"

const char* GetDefaultPath(const char* path)
{
    if (path != nullptr && *path != 0)
        GetAnsiFilename(path, g_sDefaultDir, false);
    else
        g_sDefaultDir = CurrentDirectory();
    return g_sDefaultDir.c_str();
}

bool GetAnsiFilename(const char* name, std::string& result, bool bSkipCheck)
{
    if (FileExists(name)) {
        result = name;
        return false;
    }
    std::string converted;
    UTF8ToANSI(name, converted);
    const bool useConverted = bSkipCheck || FileExists(converted.c_str());
    result = useConverted ? converted : name;
    return useConverted;
}
