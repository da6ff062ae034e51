#include "ZipArchive.h"

#include <zip.h>

#include <memory>
#include <stdexcept>

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
    m_zip = zip_open(path.c_str(), ZIP_RDONLY, &error);
    if (m_zip == nullptr) {
        zip_error_t reason;
        zip_error_init_with_code(&reason, error);
        const std::string text = zip_error_strerror(&reason);
        zip_error_fini(&reason);
        throw std::runtime_error("cannot be read as a zip archive: " + text);
    }
    const zip_int64_t count = zip_get_num_entries(m_zip, 0);
    for (zip_int64_t i = 0; i < count; ++i) m_entries.push_back(ReadEntry(static_cast<uint64_t>(i)));
}

ZipArchive::~ZipArchive()
{
    if (m_zip != nullptr) zip_discard(m_zip);
}

ZipArchive::Entry ZipArchive::ReadEntry(uint64_t number) const
{
    Entry entry;
    const char* const raw = zip_get_name(m_zip, number, ZIP_FL_ENC_RAW);
    zip_stat_t status;
    if (raw == nullptr || zip_stat_index(m_zip, number, 0, &status) != 0)
        throw std::runtime_error(std::string("cannot be read as a zip archive: ") + zip_strerror(m_zip));
    entry.name = raw;
    // Read strictly, a name without the flag is CP437, and differs then. libzip has already put the name of a
    // Unicode path field, whose checksum fits, in its place.
    const char* const strict = zip_get_name(m_zip, number, ZIP_FL_ENC_STRICT);
    entry.saysUtf8 = strict != nullptr && IsBeyondAscii(strict) && entry.name == strict;
    entry.encrypted =
        (status.valid & ZIP_STAT_ENCRYPTION_METHOD) != 0 && status.encryption_method != ZIP_EM_NONE;
    entry.size = status.size;
    entry.compressedSize = status.comp_size;
    entry.time = status.mtime;
    zip_uint8_t system = 0;
    zip_uint32_t attributes = 0;
    if (zip_file_get_external_attributes(m_zip, number, 0, &system, &attributes) == 0 &&
        system == ZIP_OPSYS_UNIX)
        entry.mode = attributes >> 16;
    return entry;
}

void ZipArchive::Read(size_t number, const std::function<void(std::string_view)>& take) const
{
    const std::unique_ptr<zip_file_t, int (*)(zip_file_t*)> file(zip_fopen_index(m_zip, number, 0),
                                                                 zip_fclose);
    if (file == nullptr) throw std::runtime_error(zip_strerror(m_zip));
    std::string piece(PIECE, '\0');
    for (uint64_t left = m_entries[number].size;;) {
        const zip_int64_t size = zip_fread(file.get(), piece.data(), piece.size());
        if (size < 0) throw std::runtime_error(zip_file_strerror(file.get()));
        if (static_cast<uint64_t>(size) > left || (size == 0 && left > 0))
            throw std::runtime_error("is not as long as the archive says");
        if (size == 0) return;
        left -= static_cast<uint64_t>(size);
        take({piece.data(), static_cast<size_t>(size)});
    }
}
