#include "Decision.h"

#include "Reading.h"
#include "UnicodeCodec.h"

namespace
{
// Valid UTF-8 that cannot be meant as `encoding`.
bool IsUtf8ButNot(std::string_view text, const Encoding& encoding)
{
    return IsFlawlessUtf8(text) && !IsPlausible(text, encoding);
}

// GBK that can be read as GB18030 is GB18030.
bool IsIn(const Identity& identity, const Encoding* encoding)
{
    return identity.encoding == encoding || (encoding == &GB18030 && identity.encoding == &GBK);
}

// Then --from is wrong by now: a second run must not convert what the first one wrote.
bool IsTargetReached(std::string_view head, const Identity& identity, const ConvertOptions& options)
{
    if (identity.mark != 0) return identity.encoding == options.to;
    if (options.to == &UTF8 || (identity.ascii && options.to->holdsAscii))
        return IsUtf8ButNot(head, *options.from);
    return IsIn(identity, options.to) && identity.margin >= options.sure && CanBeRead(head, *options.to);
}

// What speaks against --from, or empty.
std::string Contradiction(std::string_view head, const Identity& identity, const ConvertOptions& options)
{
    const std::string from = options.from->name;
    if (identity.mark != 0 && identity.encoding != options.from)
        return "has the byte-order mark of " + identity.encoding->name;
    const bool ascii = AsciiLength(head) == head.size();
    if (!options.force && identity.mark == 0 && !ascii && IsUtf8ButNot(head, *options.from))
        return "is valid UTF-8 and not plausible as " + from + "; --force converts it as " + from;
    return {};
}

void FollowFrom(std::string_view head, const ConvertOptions& options, Decision& decision)
{
    Identity& identity = decision.identity;
    ConvertOptions named = options;
    if (options.fromEitherOrder && identity.mark != 0 && identity.encoding->scheme == options.from->scheme)
        named.from = identity.encoding;
    if (!options.force && IsTargetReached(head, identity, named)) {
        decision.reached = identity.mark == 0 && options.to != named.from;
        identity.encoding = options.to;
        identity.doubt.clear();
        return;
    }
    identity.doubt = Contradiction(head, identity, named);
    identity.encoding = named.from;
    identity.ascii = identity.ascii && named.from->holdsAscii;
}

void FollowDetection(const ConvertOptions& options, Identity& identity)
{
    if (identity.binary) {
        identity.doubt = "binary; --from ENC converts it as text";
    } else if (identity.doubt.empty() && identity.mark == 0 && identity.margin < options.sure) {
        const std::string name = NameOf(identity.encoding);
        identity.doubt = "looks like " + name + ", but with a margin of only " +
                         std::to_string(identity.margin) + " (" + std::to_string(options.sure) +
                         " is required); --from " + name + " or --sure " + std::to_string(identity.margin) +
                         " converts it";
    }
}
}  // namespace

Decision Decide(std::string_view head, bool isWhole, const ConvertOptions& options)
{
    Decision decision;
    Identity& identity = decision.identity;
    identity = Identify(head, isWhole);
    if (head.empty()) identity.doubt.clear();
    if (options.from != nullptr)
        FollowFrom(head, options, decision);
    else if (!head.empty())
        FollowDetection(options, identity);
    decision.same = head.empty() || IsIn(identity, options.to) || (identity.ascii && options.to->holdsAscii);
    return decision;
}
