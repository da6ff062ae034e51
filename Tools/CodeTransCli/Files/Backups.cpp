#include "Backups.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <system_error>

#include "Source.h"
#include "Target.h"

namespace fs = std::filesystem;

namespace
{
constexpr const char* RECORD = ".codetrans.backups";
constexpr const char* SUFFIXES[] = {".orig", ".bak", "~"};

// One line, whatever the name.
std::string Escaped(const std::string& name)
{
    std::string text;
    char digits[8];
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        const bool odd = byte < 0x20 || byte == 0x7F || byte == '\\';
        snprintf(digits, sizeof digits, "\\x%02X", byte);
        text += odd ? std::string(digits) : std::string(1, c);
    }
    return text;
}

std::string Unescaped(const std::string& text)
{
    std::string name;
    for (size_t i = 0; i < text.size(); ++i) {
        const bool escape = text[i] == '\\' && i + 3 < text.size() && text[i + 1] == 'x';
        name += escape ? static_cast<char>(std::stoi(text.substr(i + 2, 2), nullptr, 16)) : text[i];
        if (escape) i += 3;
    }
    return name;
}

std::string LineOf(const Backup& backup)
{
    return Escaped(backup.name) + "\t" + Escaped(backup.original) + "\t" + backup.fingerprint + "\n";
}

// In one call, so that the lines of several processes stay apart.
void AppendLine(const std::string& folder, const std::string& line)
{
    const std::string path = folder + "/" + RECORD;
    const int record = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0666);
    if (record < 0) Fail("cannot record the backup in " + path);
    const bool written = write(record, line.data(), line.size()) == static_cast<ssize_t>(line.size());
    close(record);
    if (!written) Fail("cannot record the backup in " + path);
}

// The file beside `path` that its name adds a suffix to, or empty.
std::string OriginalByName(const fs::path& path)
{
    const std::string name = path.filename();
    for (const std::string suffix : SUFFIXES) {
        if (name.size() <= suffix.size()) continue;
        const size_t length = name.size() - suffix.size();
        std::error_code error;
        if (name.compare(length, suffix.size(), suffix) == 0 &&
            fs::is_regular_file(path.parent_path() / name.substr(0, length), error))
            return name.substr(0, length);
    }
    return {};
}
}  // namespace

bool IsBackupRecord(const std::string& name)
{
    return name == RECORD;
}

void RecordBackup(const std::string& folder, const Backup& backup)
{
    AppendLine(folder, LineOf(backup));
}

void FlushBackupRecord(const std::string& folder)
{
    const std::string path = folder + "/" + RECORD;
    const int record = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const bool flushed = record >= 0 && fsync(record) == 0;
    if (record >= 0) close(record);
    if (!flushed) Fail("cannot flush " + path);
}

std::vector<Backup> RecordedBackups(const fs::path& folder)
{
    std::vector<Backup> backups;
    std::error_code error;
    if (!fs::is_regular_file(folder / RECORD, error)) return backups;
    std::ifstream file(folder / RECORD);
    for (std::string line; std::getline(file, line);) {
        const size_t first = line.find('\t');
        if (first == std::string::npos) continue;
        const size_t second = std::min(line.find('\t', first + 1), line.size());
        backups.push_back({Unescaped(line.substr(0, first)),
                           Unescaped(line.substr(first + 1, second - first - 1)),
                           line.substr(std::min(second + 1, line.size()))});
    }
    return backups;
}

void RecordNewNames(const fs::path& folder, const std::map<std::string, std::string>& names)
{
    const auto renamed = [&](const std::string& name) {
        const auto found = names.find(name);
        return found != names.end() ? found->second : name;
    };
    std::string lines;
    for (const Backup& backup : RecordedBackups(folder))
        if (names.count(backup.name) + names.count(backup.original) > 0)
            lines += LineOf({renamed(backup.name), renamed(backup.original), backup.fingerprint});
    if (lines.empty()) return;
    AppendLine(folder, lines);
    FlushBackupRecord(folder);
}

void ForgetBackups(const fs::path& folder, const std::set<std::string>& gone)
{
    std::string text;
    for (const Backup& backup : RecordedBackups(folder))
        if (gone.count(backup.name) == 0) text += LineOf(backup);
    if (text.empty()) {
        fs::remove(folder / RECORD);
        return;
    }
    Target target(folder / RECORD);
    target.Write(text);
    target.Prepare(nullptr);
    target.Commit({});
}

std::string Fingerprint(int descriptor)
{
    constexpr uint64_t BASIS = 0xcbf29ce484222325, PRIME = 0x100000001b3;
    uint64_t hash = BASIS;
    off_t size = 0;
    std::vector<char> buffer(1 << 16);
    for (;;) {
        const ssize_t got = pread(descriptor, buffer.data(), buffer.size(), size);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) Fail("cannot read");
        if (got == 0) break;
        for (ssize_t i = 0; i < got; ++i)
            hash = (hash ^ static_cast<unsigned char>(buffer[static_cast<size_t>(i)])) * PRIME;
        size += got;
    }
    char text[48];
    snprintf(text, sizeof text, "%lld:%016llx", static_cast<long long>(size),
             static_cast<unsigned long long>(hash));
    return text;
}

std::string Backups::OriginalOf(const fs::path& path)
{
    std::error_code error;
    const fs::path real = fs::is_symlink(path, error) ? fs::canonical(path, error) : path;
    if (error) return {};
    const Record& record = RecordOf(real.parent_path());
    const auto found = record.find(real.filename());
    return found != record.end() ? found->second : OriginalByName(real);
}

const Backups::Record& Backups::RecordOf(const fs::path& folder)
{
    const auto [place, isNew] = m_records.try_emplace(folder);
    if (isNew)
        for (const Backup& backup : RecordedBackups(folder))
            place->second.insert_or_assign(backup.name, backup.original);
    return place->second;
}
