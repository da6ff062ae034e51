// The locale that some of the library's routes need, though none that this program uses.
#ifndef CODETRANSCLI_LOCALE_H
#define CODETRANSCLI_LOCALE_H

#include <string>

constexpr const char* LOCALE_NAME = "zh_CN.gbk";

bool LocaleIsThere();

// What to type to get it, on this machine.
std::string CommandThatMakesLocale();

#endif  // CODETRANSCLI_LOCALE_H
