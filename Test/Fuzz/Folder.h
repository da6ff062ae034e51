// A folder of the process's own for targets that read and write files: two deep, so that even ".." stays in
// it, and current from its making to the end of the process.
#ifndef TEST_FUZZ_FOLDER_H
#define TEST_FUZZ_FOLDER_H

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

#include "Fuzz.h"

class Folder
{
public:
    Folder()
    {
        std::string name = std::filesystem::temp_directory_path() / "codetrans-fuzz-XXXXXX";
        REQUIRE(mkdtemp(name.data()) != nullptr);
        m_outer = name;
        m_path = m_outer / "inner";
        std::filesystem::create_directory(m_path);
    }
    ~Folder()
    {
        std::error_code error;
        std::filesystem::remove_all(m_outer, error);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string Path() const { return m_path; }

    void Empty() const
    {
        for (const auto& entry : std::filesystem::directory_iterator(m_path))
            std::filesystem::remove_all(entry.path());
    }

    // Every file's content by its name.
    std::map<std::string, std::string> Files() const
    {
        std::map<std::string, std::string> files;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_path))
            if (entry.is_regular_file()) files[entry.path().lexically_relative(m_path)] = Read(entry.path());
        return files;
    }

    static std::string Read(const std::string& name)
    {
        std::ifstream file(name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    static bool Write(const std::string& name, const std::string& content)
    {
        return static_cast<bool>(std::ofstream(name, std::ios::binary) << content << std::flush);
    }

private:
    std::filesystem::path m_outer, m_path;
};

// Makes an emptied folder the current one while it lives. libFuzzer itself works elsewhere.
class Stay
{
public:
    explicit Stay(const Folder& folder)
    {
        folder.Empty();
        std::filesystem::current_path(folder.Path());
    }
    ~Stay() { std::filesystem::current_path(m_before); }
    Stay(const Stay&) = delete;
    Stay& operator=(const Stay&) = delete;

private:
    std::filesystem::path m_before = std::filesystem::current_path();
};

// What any name may be made of without leading out of the folder.
inline std::string Harmless(std::string name)
{
    std::replace(name.begin(), name.end(), '/', '_');
    for (size_t at = name.find(".."); at != std::string::npos; at = name.find("..")) name[at] = '_';
    return name;
}

#endif  // TEST_FUZZ_FOLDER_H
