#include "ZipArchive.h"

#include <memory>
#include <stdexcept>

#include "LibZip.h"

namespace
{
constexpr size_t PIECE = 1 << 16;

bool IsBeyondAscii(const char* text)
{
    for (; *text != 0; ++text)
        if (static_cast<unsigned char>(*text) >= 0x80) return true;
    return false;
}
}  // namespace

ZipArchive::ZipArchive(const std::string& path)
{
    int error = 0;
    m_zip = TheLibZip().open(path.c_str(), ZIP_RDONLY, &error);
    if (m_zip == nullptr) {
        zip_error_t reason;
        TheLibZip().errorInit(&reason, error);
        const std::string text = TheLibZip().errorText(&reason);
        TheLibZip().errorFree(&reason);
        throw std::runtime_error("cannot be read as a zip archive: " + text);
    }
    const zip_int64_t count = TheLibZip().entryCount(m_zip, 0);
    for (zip_int64_t i = 0; i < count; ++i) m_entries.push_back(ReadEntry(static_cast<uint64_t>(i)));
}

ZipArchive::~ZipArchive()
{
    if (m_zip != nullptr) TheLibZip().discard(m_zip);
}

ZipArchive::Entry ZipArchive::ReadEntry(uint64_t number) const
{
    Entry entry;
    const char* const raw = TheLibZip().name(m_zip, number, ZIP_FL_ENC_RAW);
    zip_stat_t status;
    if (raw == nullptr || TheLibZip().status(m_zip, number, 0, &status) != 0)
        throw std::runtime_error(std::string("cannot be read as a zip archive: ") +
                                 TheLibZip().lastError(m_zip));
    entry.name = raw;
    // Read strictly, a name without the flag is CP437, and differs then. libzip has already put the name of a
    // Unicode path field, whose checksum fits, in its place.
    const char* const strict = TheLibZip().name(m_zip, number, ZIP_FL_ENC_STRICT);
    entry.saysUtf8 = strict != nullptr && IsBeyondAscii(strict) && entry.name == strict;
    entry.encrypted =
        (status.valid & ZIP_STAT_ENCRYPTION_METHOD) != 0 && status.encryption_method != ZIP_EM_NONE;
    entry.size = status.size;
    entry.compressedSize = status.comp_size;
    entry.time = status.mtime;
    zip_uint8_t system = 0;
    zip_uint32_t attributes = 0;
    if (TheLibZip().attributes(m_zip, number, 0, &system, &attributes) == 0 && system == ZIP_OPSYS_UNIX)
        entry.mode = attributes >> 16;
    return entry;
}

void ZipArchive::Read(size_t number, const std::function<void(std::string_view)>& take) const
{
    const std::unique_ptr<zip_file_t, int (*)(zip_file_t*)> file(TheLibZip().openFile(m_zip, number, 0),
                                                                 TheLibZip().closeFile);
    if (file == nullptr) throw std::runtime_error(TheLibZip().lastError(m_zip));
    std::string piece(PIECE, '\0');
    for (uint64_t left = m_entries[number].size;;) {
        const zip_int64_t size = TheLibZip().readFile(file.get(), piece.data(), piece.size());
        if (size < 0) throw std::runtime_error(TheLibZip().fileError(file.get()));
        if (static_cast<uint64_t>(size) > left || (size == 0 && left > 0))
            throw std::runtime_error("is not as long as the archive says");
        if (size == 0) return;
        left -= static_cast<uint64_t>(size);
        take({piece.data(), static_cast<size_t>(size)});
    }
}
