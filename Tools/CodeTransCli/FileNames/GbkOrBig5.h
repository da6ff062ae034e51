// Which of GBK and Big5 a group of names is in.
#ifndef CODETRANSCLI_GBKORBIG5_H
#define CODETRANSCLI_GBKORBIG5_H

#include <optional>
#include <string>
#include <vector>

#include "NameEncoding.h"

bool AllReadable(const std::vector<std::string>& names, NameEncoding encoding);

// The encoding in which all of `names` can be read and are plausible as Chinese names, if the library answers
// it for all of them together, or the other one is out of the question.
std::optional<NameEncoding> GbkOrBig5(const std::vector<std::string>& names);

#endif  // CODETRANSCLI_GBKORBIG5_H
