#include "Decision.h"

#include "Characters.h"
#include "Conversion.h"
#include "Encoding.h"
#include "Reading.h"

namespace
{
// Flawless UTF-8 that cannot be meant as `encoding`.
bool IsUtf8ButNot(std::string_view text, int encoding)
{
    return IsFlawlessUtf8(text) && !IsPlausible(text, encoding);
}

// Then --from is wrong by now: a second run must not convert what the first one wrote.
bool IsTargetReached(std::string_view bytes, const Identity& identity, const ConvertOptions& options)
{
    if (identity.mark != 0) return identity.code == options.to;
    if (options.to == ENCODE_UTF8 || (identity.ascii && options.to == ENCODE_GBK))
        return IsUtf8ButNot(bytes, *options.from);
    return identity.code == options.to && !identity.ascii && FindUnreadable(bytes, options.to, 0).count == 0;
}

// What speaks against --from, or empty.
std::string Contradiction(std::string_view bytes, const Identity& identity, const ConvertOptions& options)
{
    const std::string from = EncodingName(*options.from);
    if (identity.mark != 0 && identity.code != *options.from)
        return std::string("has the byte-order mark of ") + EncodingName(identity.code);
    if (!options.force && identity.mark == 0 && !IsAscii(bytes) && IsUtf8ButNot(bytes, *options.from))
        return "is flawless UTF-8 and not plausible as " + from + "; --force converts it as " + from;
    return {};
}

void FollowFrom(std::string_view bytes, const ConvertOptions& options, Decision& decision)
{
    Identity& identity = decision.identity;
    if (!options.force && IsTargetReached(bytes, identity, options)) {
        decision.reached = identity.mark == 0 && options.to != *options.from;
        identity.code = options.to;
        identity.doubt.clear();
        return;
    }
    identity.doubt = Contradiction(bytes, identity, options);
    identity.code = *options.from;
    identity.ascii = identity.ascii && *options.from != ENCODE_UNICODE;
}
}  // namespace

Decision Decide(std::string_view bytes, const ConvertOptions& options)
{
    Decision decision;
    Identity& identity = decision.identity;
    identity = Identify(bytes);
    if (options.from)
        FollowFrom(bytes, options, decision);
    else if (identity.binary)
        identity.doubt = "binary; --from ENC converts it as text";
    const bool ascii = identity.ascii && options.to != ENCODE_UNICODE;
    decision.same = bytes.empty() || identity.code == options.to || ascii;
    return decision;
}
