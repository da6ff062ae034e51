// A folder into which an archive is extracted. Nothing is written outside of it, and no file in it is
// overwritten.
#ifndef CODETRANSCLI_EXTRACTION_H
#define CODETRANSCLI_EXTRACTION_H

#include <ctime>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// What is not done, and why.
struct Refusal : std::runtime_error {
    using std::runtime_error::runtime_error;
};

using Components = std::vector<std::string>;

// Of an entry's name, which a slash or a backslash divides. Throws Refusal where the path would lead
// elsewhere.
Components ComponentsOf(std::string_view name);

class ExtractionFolder
{
public:
    // Makes the folder if it is missing. Throws std::system_error.
    explicit ExtractionFolder(const std::string& path);
    ~ExtractionFolder();
    ExtractionFolder(const ExtractionFolder&) = delete;
    ExtractionFolder& operator=(const ExtractionFolder&) = delete;

    // Bytes that fit.
    unsigned long long Room() const;

    // Makes folders that are missing. Throws Refusal where a link or a file is in the way.
    void MakeFolder(const Components& components) const;

    // A new file, which goes again unless it is kept.
    class File
    {
    public:
        File(const ExtractionFolder& folder, const Components& components, bool executable);
        ~File();
        File(const File&) = delete;
        File& operator=(const File&) = delete;

        void Write(std::string_view bytes) const;
        void Keep(time_t time);

    private:
        int m_folder = -1, m_file = -1;
        std::string m_name;
    };

private:
    int Open(const Components& components, size_t count) const;

    int m_folder = -1;
};

#endif  // CODETRANSCLI_EXTRACTION_H
