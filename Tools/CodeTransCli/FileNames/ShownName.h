// A file name in a line for a person to read, just as it is.
#ifndef CODETRANSCLI_SHOWNNAME_H
#define CODETRANSCLI_SHOWNNAME_H

#include <string>
#include <string_view>

// Control characters are shown as \n or \x1B; so are all bytes beyond ASCII of a name that is not UTF-8.
std::string ShownName(std::string_view name);

#endif  // CODETRANSCLI_SHOWNNAME_H
