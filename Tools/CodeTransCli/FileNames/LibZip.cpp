#include "LibZip.h"

#include <dlfcn.h>

#include <stdexcept>
#include <string>

namespace
{
template <typename Function>
void Find(void* library, const char* name, Function& function)
{
    function = reinterpret_cast<Function>(dlsym(library, name));
    if (function == nullptr) throw std::runtime_error(std::string(CODETRANS_ZIP_SONAME " lacks ") + name);
}

LibZip Load()
{
    void* const library = dlopen(CODETRANS_ZIP_SONAME, RTLD_NOW);
    if (library == nullptr)
        throw std::runtime_error("cannot be read without libzip (" CODETRANS_ZIP_SONAME "): install it");
    LibZip zip = {};
    Find(library, "zip_open", zip.open);
    Find(library, "zip_discard", zip.discard);
    Find(library, "zip_error_init_with_code", zip.errorInit);
    Find(library, "zip_error_strerror", zip.errorText);
    Find(library, "zip_error_fini", zip.errorFree);
    Find(library, "zip_strerror", zip.lastError);
    Find(library, "zip_get_num_entries", zip.entryCount);
    Find(library, "zip_get_name", zip.name);
    Find(library, "zip_stat_index", zip.status);
    Find(library, "zip_file_get_external_attributes", zip.attributes);
    Find(library, "zip_fopen_index", zip.openFile);
    Find(library, "zip_fread", zip.readFile);
    Find(library, "zip_fclose", zip.closeFile);
    Find(library, "zip_file_strerror", zip.fileError);
    return zip;
}
}  // namespace

const LibZip& TheLibZip()
{
    static const LibZip s_zip = Load();
    return s_zip;
}
