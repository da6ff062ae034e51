// What a file that is to be converted is taken for: what --from says, unless its bytes speak against it, or
// what it looks like.
#ifndef CODETRANSCLI_DECISION_H
#define CODETRANSCLI_DECISION_H

#include <string_view>

#include "Commands.h"
#include "Identity.h"

struct Decision {
    Identity identity;     // with the encoding that counts; the doubt says why nothing can be done
    bool same = false;     // no conversion: empty, or in the target encoding
    bool reached = false;  // the target encoding, although --from names another
};

// `head` as for Identify.
Decision Decide(std::string_view head, bool isWhole, const ConvertOptions& options);

#endif  // CODETRANSCLI_DECISION_H
