#include "GbkOrBig5.h"

#include <STLCodeTrans.h>

#include <algorithm>

#include "Mishap.h"

namespace
{
using Names = std::vector<std::string>;

std::string Joined(const Names& names)
{
    std::string joined;
    for (const std::string& name : names) joined += name + "\n";
    return joined;
}

// Whether names of accented letters, in CP437 or Latin-1, say, are what these are rather than pairs of bytes.
bool AreScattered(const Names& names)
{
    return IsScattered(*DecodeName(Joined(names), NameEncoding::LATIN1));
}

// Chinese names, if half of their hanzi are common.
bool ArePlausible(const Names& names, NameEncoding encoding)
{
    if (!AllReadable(names, encoding) || AreScattered(names)) return false;
    const std::u32string text = *DecodeName(Joined(names), encoding);
    if (IsInWords(text, encoding)) return false;
    const Plausibility plausible = PlausibilityOf(text, encoding);
    return plausible.hanzi > 0 && 2 * plausible.common >= plausible.hanzi &&
           plausible.strange <= plausible.hanzi;
}
}  // namespace

bool AllReadable(const std::vector<std::string>& names, NameEncoding encoding)
{
    return std::all_of(names.begin(), names.end(),
                       [&](const std::string& name) { return DecodeName(name, encoding).has_value(); });
}

std::optional<NameEncoding> GbkOrBig5(const std::vector<std::string>& names)
{
    const std::string joined = Joined(names);
    const int answer = CodeTrans_CodeDetect(joined.data(), joined.size());
    const bool gbk = ArePlausible(names, NameEncoding::GB), big5 = ArePlausible(names, NameEncoding::BIG_5);
    if (gbk && (answer == ENCODE_GBK || !AllReadable(names, NameEncoding::BIG_5))) return NameEncoding::GB;
    if (big5 && (answer == ENCODE_BIG5 || !AllReadable(names, NameEncoding::GB))) return NameEncoding::BIG_5;
    return std::nullopt;
}
