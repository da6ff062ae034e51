#include "Locale.h"

#include <langinfo.h>
#include <locale.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

// Asks the way the library asks.
bool LocaleIsThere()
{
    const std::string before = setlocale(LC_ALL, nullptr);
    const bool there = setlocale(LC_ALL, LOCALE_NAME) != nullptr && strcmp(nl_langinfo(CODESET), "GBK") == 0;
    setlocale(LC_ALL, before.c_str());
    return there;
}

std::string CommandThatMakesLocale()
{
    const std::string root = geteuid() == 0 ? "" : "sudo ";
    const bool hasSources = access("/usr/share/i18n/locales/zh_CN", R_OK) == 0;
    const std::string sources = hasSources ? "" : root + "apt-get install locales && ";
    // Where LOCPATH is set, the C library does not look into the archive that localedef adds to.
    const char* const path = getenv("LOCPATH");
    if (path != nullptr && *path != 0) {
        const std::string first = std::string(path).substr(0, strcspn(path, ":"));
        return sources + "mkdir -p '" + first + "' && localedef -i zh_CN -f GBK '" + first + "/" +
               LOCALE_NAME + "'";
    }
    return sources + root + "localedef -i zh_CN -f GBK " + LOCALE_NAME;
}
