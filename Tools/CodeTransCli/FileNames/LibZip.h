// libzip, loaded when the first archive is opened.
//
// Only `names --zip` needs it. Linked, it would be loaded at each start of the program, with the libraries
// that it needs itself, and that takes longer than most files do.
#ifndef CODETRANSCLI_LIBZIP_H
#define CODETRANSCLI_LIBZIP_H

#include <zip.h>

struct LibZip {
    decltype(&zip_open) open;
    decltype(&zip_discard) discard;
    decltype(&zip_error_init_with_code) errorInit;
    decltype(&zip_error_strerror) errorText;
    decltype(&zip_error_fini) errorFree;
    decltype(&zip_strerror) lastError;
    decltype(&zip_get_num_entries) entryCount;
    decltype(&zip_get_name) name;
    decltype(&zip_stat_index) status;
    decltype(&zip_file_get_external_attributes) attributes;
    decltype(&zip_fopen_index) openFile;
    decltype(&zip_fread) readFile;
    decltype(&zip_fclose) closeFile;
    decltype(&zip_file_strerror) fileError;
};

// Throws std::runtime_error where libzip is not installed.
const LibZip& TheLibZip();

#endif  // CODETRANSCLI_LIBZIP_H
