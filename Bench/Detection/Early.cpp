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
}  // namespace

void PrintEarly(const std::string& folder)
{
    const std::vector<JudgedSample> files = DrawLargeFiles(folder);
    std::map<std::string, std::vector<size_t>> heads;
    std::map<std::string, int> wrong, undecided;
    for (const JudgedSample& file : files) {
        // Text without line ends never ends a walk itself, so it can only be outweighed.
        const bool isUtf8 = file.answer == ENCODE_UTF8;
        std::string contrary;
        while (contrary.size() < 4 * file.bytes.size())
            contrary += isUtf8 ? "\xB5\xC4\xC4\xE3\xCE\xD2\xD6\xD0" : "的你我中";
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
}
