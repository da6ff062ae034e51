// One name in a folder that becomes another.
#ifndef CODETRANSCLI_RENAMING_H
#define CODETRANSCLI_RENAMING_H

#include <string>

struct Renaming {
    std::string folder, from, to;

    // Renames, and overwrites nothing. Returns 0 or an error number.
    int Do() const;
};

#endif  // CODETRANSCLI_RENAMING_H
