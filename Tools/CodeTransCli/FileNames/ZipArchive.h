// A zip archive as it is read: raw names, what each entry is, and its contents piece by piece.
#ifndef CODETRANSCLI_ZIPARCHIVE_H
#define CODETRANSCLI_ZIPARCHIVE_H

#include <cstdint>
#include <ctime>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

struct zip;

class ZipArchive
{
public:
    struct Entry {
        std::string name;       // the bytes
        bool saysUtf8 = false;  // by its flag, or by the field that holds the name a second time
        bool encrypted = false;
        uint64_t size = 0, compressedSize = 0;  // as the archive's directory states
        time_t time = 0;
        unsigned mode = 0;  // of Unix; 0 where the archive is from elsewhere
    };

    // Throws std::runtime_error.
    explicit ZipArchive(const std::string& path);
    ~ZipArchive();
    ZipArchive(const ZipArchive&) = delete;
    ZipArchive& operator=(const ZipArchive&) = delete;

    const std::vector<Entry>& Entries() const { return m_entries; }

    // Throws std::runtime_error where the contents are damaged, or not as long as stated.
    void Read(size_t number, const std::function<void(std::string_view)>& take) const;

private:
    Entry ReadEntry(uint64_t number) const;

    struct zip* m_zip = nullptr;
    std::vector<Entry> m_entries;
};

#endif  // CODETRANSCLI_ZIPARCHIVE_H
