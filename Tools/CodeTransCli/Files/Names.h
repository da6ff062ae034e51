// File names as a person can read them, one line each.
#ifndef CODETRANSCLI_NAMES_H
#define CODETRANSCLI_NAMES_H

#include <string>
#include <string_view>

// In UTF-8: a name in GBK is converted, control characters become \n or \x1B, bytes that are neither become
// \xFF.
std::string Readable(std::string_view name);

std::string Base64(std::string_view bytes);

// Columns on a terminal.
size_t Width(const std::string& readable);

#endif  // CODETRANSCLI_NAMES_H
