// The judge's samples: pieces of texts that the trainer never saw, encoded, with the right answer.
//
// Each sample belongs to a test (what is measured), a kind (what text) and a length. The same seed gives the
// same samples. Text is kept as UTF-16 code units, so that all detectors get the very same characters.
#ifndef BENCH_DETECTION_CORPUS_H
#define BENCH_DETECTION_CORPUS_H

#include <string>
#include <vector>

struct JudgedSample {
    std::string test;      // such as "windows"; Targets.cpp lists them
    std::string encoding;  // gbk, big5, utf8, utf16, or none where "undecided" is right
    std::string kind;      // kind of text, language, or foreign encoding
    int length = 0;        // characters or bytes, 0 for whole files and lines
    std::string bytes;
    int answer = 0;  // the library's code
};

// Whether a detector's answer is right; one that names a foreign encoding (-1) has not taken the text for
// ours.
bool IsRight(const JudgedSample& sample, int answer);

// A mebibyte or so of every kind of running text in every encoding, characters that it lacks left out.
std::vector<JudgedSample> DrawLargeFiles(const std::string& folder);

// Every whole file: Chinese, of other languages, and foreign.
std::vector<JudgedSample> DrawWholeFiles(const std::string& folder);

// Draws `count` samples for each test, encoding, kind and length from one part of what fetch-judge-texts
// left.
std::vector<JudgedSample> DrawSamples(const std::string& folder, int count);

#endif  // BENCH_DETECTION_CORPUS_H
