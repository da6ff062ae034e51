// Two models on a folder of labelled files: what got better and what got worse.
#ifndef MODEL_BUILDER_COMPARE_H
#define MODEL_BUILDER_COMPARE_H

#include <iosfwd>
#include <string>

// `folder` has a folder a label: gbk, big5, utf-8, utf-16le or undecided (any other text, and data), each
// with files of that encoding. Whole files are judged, and their lines, and pieces of 4 and 16 characters
// that lines begin with. Prints how many each model answers rightly, and the files that they answer
// differently. Throws std::runtime_error where a model or a label is none.
void CompareModels(const std::string& oldModel, const std::string& newModel, const std::string& folder,
                   std::ostream& out);

#endif  // MODEL_BUILDER_COMPARE_H
