// How much of a large file decides it; see Early.h.
#include "Early.h"

#include <algorithm>
#include <iostream>
#include <map>

#include "CodeTrans.h"
#include "Corpus.h"

namespace
{
int Detect(const std::string& text)
{
    return TQ_CodeDetect(text.data(), text.size());
}

// "的你我中" again and again, as much as asked for, in GBK or in UTF-8, without a line end.
std::string Contrary(bool isGbk, size_t size)
{
    std::string text;
    while (text.size() < size) text += isGbk ? "\xB5\xC4\xC4\xE3\xCE\xD2\xD6\xD0" : "的你我中";
    return text;
}

// The shortest head that decides, or the file's size. Whether a head decides grows with its length.
size_t DecidingHead(const std::string& file, const std::string& contrary, int answer)
{
    const auto decides = [&](size_t length) { return Detect(file.substr(0, length) + contrary) == answer; };
    if (!decides(file.size() / 8)) return file.size();
    size_t low = 0, high = file.size() / 8;
    while (low < high) {
        const size_t middle = (low + high) / 2;
        if (decides(middle))
            high = middle;
        else
            low = middle + 1;
    }
    return low;
}

// What the file decides so firmly that four times as much text behind it, of whichever encoding, changes
// nothing; ENCODE_UNKNOWN when nothing is decided before its end.
int EarlyAnswer(const std::string& file)
{
    const int beforeGbk = Detect(file + Contrary(true, 4 * file.size() + 1000));
    const int beforeUtf8 = Detect(file + Contrary(false, 4 * file.size() + 1000));
    return beforeGbk == beforeUtf8 ? beforeGbk : ENCODE_UNKNOWN;
}

// Whole files of all kinds: how many name an encoding early, and how many of these a wrong one.
void PrintEarlyFiles(const std::string& folder)
{
    std::map<std::string, int> all, early, wrong;
    for (const JudgedSample& file : DrawWholeFiles(folder)) {
        const std::string group =
            file.encoding + (file.encoding == "utf8" && file.kind != "chinese" ? " world" : "");
        const int answer = EarlyAnswer(file.bytes);
        ++all[group];
        early[group] += answer != ENCODE_UNKNOWN;
        if (answer == ENCODE_UNKNOWN || answer == file.answer) continue;
        ++wrong[group];
        std::cout << "early and wrong: " << file.kind << ", answer " << answer << '\n';
    }
    for (const auto& [group, files] : all)
        std::cout << "whole files " << group << ": " << files << " files, " << early[group]
                  << " decided early, " << wrong[group] << " of them wrong\n";
}
}  // namespace

void PrintEarly(const std::string& folder)
{
    const std::vector<JudgedSample> files = DrawLargeFiles(folder);
    std::map<std::string, std::vector<size_t>> heads;
    std::map<std::string, int> wrong, undecided;
    for (const JudgedSample& file : files) {
        // Text without line ends never ends a walk itself, so it can only be outweighed.
        const std::string contrary = Contrary(file.answer == ENCODE_UTF8, 4 * file.bytes.size());
        wrong[file.encoding] += Detect(file.bytes) != file.answer;
        const size_t head = DecidingHead(file.bytes, contrary, file.answer);
        undecided[file.encoding] += head == file.bytes.size();
        heads[file.encoding].push_back(head);
    }
    for (auto& [encoding, lengths] : heads) {
        std::sort(lengths.begin(), lengths.end());
        std::cout << "early " << encoding << ": " << lengths.size() << " files, "
                  << lengths.size() - static_cast<size_t>(undecided[encoding])
                  << " decided early, median after " << lengths[lengths.size() / 2] << " bytes, "
                  << wrong[encoding] << " wrong\n";
    }
    PrintEarlyFiles(folder);
}
