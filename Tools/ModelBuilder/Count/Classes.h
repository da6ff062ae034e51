// The classes of text that the model learns from, as the committed list names them.
//
// A class is a folder of texts with one role in training. Its counts are in Data/Statistics/CLASS.txt.
#ifndef MODEL_BUILDER_CLASSES_H
#define MODEL_BUILDER_CLASSES_H

#include <string>
#include <vector>

// What a class serves for, and in which form its texts come.
enum class Role {
    PROSE,  // Chinese lines
    TECH,   // Chinese lines with the ASCII among them
    WORDS,  // Chinese words, each with a tab and its frequency behind
    ASCII,  // lines of ASCII
    WORLD,  // lines of other languages, with something beyond ASCII in each
    BYTES,  // foreign: bytes in an encoding of single bytes, or data
    PAIRS,  // foreign: bytes in an encoding of two bytes to a character
    KANA    // the same, and A0 to DF are characters of one byte
};

struct TextClass {
    std::string name;
    Role role = Role::PROSE;
    bool isTraditional = false;
    double weight =
        0;  // among the classes of its kind: those of its script, of the world's text, of foreign text
    size_t pairs = 0;   // most pairs of characters that its statistics keep
    std::string title;  // for people
};

constexpr bool IsChinese(Role role)
{
    return role <= Role::WORDS;
}

constexpr bool IsForeign(Role role)
{
    return role >= Role::BYTES;
}

// Reads the list; throws std::runtime_error that names file and line where it is not one.
std::vector<TextClass> ReadClasses(const std::string& path);

#endif  // MODEL_BUILDER_CLASSES_H
