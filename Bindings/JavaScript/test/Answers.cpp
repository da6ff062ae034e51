// Prints the native engine's answers, for the tests to compare with.
//
// Usage: Answers MODEL < TEXTS. Each text is preceded by its length, as four bytes, lowest first. Prints a
// line for each: code, margin, whether it is ASCII, length of the mark.
#include <cstdio>
#include <string>

#include "Margin.h"

int main(int argc, char** argv)
{
    if (argc < 2 || CodeTrans_Map(argv[1]) != 0) return 2;
    unsigned char size[4];
    while (fread(size, 1, 4, stdin) == 4) {
        size_t length = 0;
        for (int i = 3; i >= 0; --i) length = length << 8 | size[i];
        std::string text(length, '\0');
        if (fread(text.data(), 1, text.size(), stdin) != text.size()) return 2;
        const Answer answer = AnswerFor(text.data(), text.size());
        printf("%d %d %d %lu\n", answer.code, answer.margin, answer.ascii ? 1 : 0,
               MarkLength(answer.code, text.data(), text.size()));
    }
    CodeTrans_Destroy();
    return 0;
}
