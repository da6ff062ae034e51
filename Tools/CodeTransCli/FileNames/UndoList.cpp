#include "UndoList.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

#include "NameEncoding.h"

namespace fs = std::filesystem;

namespace
{
constexpr const char* HEAD = "# codetrans names --undo takes these back: folder, old name, new name\n";
constexpr const char* END = "# end\n";

// Fit for a field of a line: control characters and backslashes as \x09, and all beyond ASCII too where it is
// not UTF-8.
std::string Escaped(const std::string& name)
{
    const bool isUtf8 = DecodeName(name, NameEncoding::UTF_8).has_value();
    std::string text;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        char digits[8];
        snprintf(digits, sizeof digits, "\\x%02X", byte);
        const bool odd = byte < 0x20 || byte == 0x7F || byte == '\\' || (byte >= 0x80 && !isUtf8);
        text += odd ? std::string(digits) : std::string(1, c);
    }
    return text;
}

unsigned Digit(char c)
{
    const std::string digits = "0123456789ABCDEF";
    const size_t value = digits.find(c);
    if (c == 0 || value == std::string::npos)
        throw std::runtime_error("is not an undo list: invalid escape sequence");
    return static_cast<unsigned>(value);
}

std::string Unescaped(const std::string& text)
{
    std::string name;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            name += text[i];
        } else {
            if (text.size() - i < 4)
                throw std::runtime_error("is not an undo list: incomplete escape sequence");
            name += static_cast<char>(Digit(text[i + 2]) << 4 | Digit(text[i + 3]));
            i += 3;
        }
    }
    return name;
}

bool IsName(const std::string& name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

Renaming Parsed(const std::string& line)
{
    const size_t first = line.find('\t'), second = line.find('\t', first + 1);
    if (first == std::string::npos || second == std::string::npos)
        throw std::runtime_error("is not an undo list: a line does not have three fields");
    Renaming renaming{Unescaped(line.substr(0, first)), Unescaped(line.substr(first + 1, second - first - 1)),
                      Unescaped(line.substr(second + 1))};
    if (!IsName(renaming.from) || !IsName(renaming.to))
        throw std::runtime_error("is not an undo list: invalid file name");
    return renaming;
}

[[noreturn]] void Fail(const std::string& what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

void Flush(int file, const std::string& path)
{
    const bool flushed = fsync(file) == 0;
    if (close(file) != 0 || !flushed) Fail("cannot write the undo list " + path);
}
}  // namespace

std::string NewUndoListName()
{
    const time_t now = time(nullptr);
    struct tm local = {};
    localtime_r(&now, &local);
    char stamp[32];
    strftime(stamp, sizeof stamp, "%Y%m%d-%H%M%S", &local);
    const std::string base = std::string("codetrans-names-undo-") + stamp;
    std::string name = base + ".tsv";
    std::error_code error;
    for (int i = 2; fs::exists(fs::symlink_status(name, error)); ++i)
        name = base + "-" + std::to_string(i) + ".tsv";
    return name;
}

void WriteUndoList(const std::string& path, const std::vector<Renaming>& renamings)
{
    std::string text = HEAD;
    for (const Renaming& renaming : renamings)
        text += Escaped(renaming.folder) + "\t" + Escaped(renaming.from) + "\t" + Escaped(renaming.to) + "\n";
    text += END;
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
    if (file < 0) Fail("cannot create the undo list " + path);
    for (size_t done = 0; done < text.size();) {
        const ssize_t size = write(file, text.data() + done, text.size() - done);
        if (size < 0 && errno != EINTR) {
            const int error = errno;
            close(file);
            unlink(path.c_str());
            errno = error;
            Fail("cannot write the undo list " + path);
        }
        done += size > 0 ? static_cast<size_t>(size) : 0;
    }
    Flush(file, path);
    const std::string folder = fs::absolute(path).parent_path();
    const int place = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (place < 0) Fail("cannot write the undo list " + path);
    Flush(place, path);
}

std::vector<Renaming> ReadUndoList(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    if (!file) throw std::runtime_error("cannot be read");
    const std::string head = HEAD, end = END;
    if (text.compare(0, head.size(), head) != 0) throw std::runtime_error("is not an undo list");
    if (text.size() < head.size() + end.size() ||
        text.compare(text.size() - end.size() - 1, std::string::npos, "\n" + end) != 0)
        throw std::runtime_error("is incomplete: the end of the undo list is missing");
    std::vector<Renaming> renamings;
    for (size_t begin = head.size(); begin < text.size() - end.size();) {
        const size_t stop = text.find('\n', begin);
        renamings.push_back(Parsed(text.substr(begin, stop - begin)));
        begin = stop + 1;
    }
    return renamings;
}
