#include "Backups.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <system_error>

#include "Source.h"

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

// In one call, so that the lines of several processes stay apart.
void AppendLine(const std::string& folder, const std::string& line)
{
    const std::string path = folder + "/" + RECORD;
    const int record = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0666);
    if (record < 0) Fail("cannot record the backup in " + path);
    const bool written = write(record, line.data(), line.size()) == static_cast<ssize_t>(line.size());
    const bool flushed = written && fsync(record) == 0;
    close(record);
    if (!flushed) Fail("cannot record the backup in " + path);
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

void RecordBackup(const std::string& folder, const std::string& backup, const std::string& original)
{
    AppendLine(folder, Escaped(backup) + "\t" + Escaped(original) + "\n");
}

std::string Backups::OriginalOf(const fs::path& path)
{
    std::error_code error;
    const fs::path real = fs::is_symlink(path, error) ? fs::canonical(path, error) : path;
    if (error) return {};
    const Record& record = RecordOf(real.parent_path());
    const auto found = record.find(Escaped(real.filename()));
    return found != record.end() ? found->second : OriginalByName(real);
}

void Backups::RecordNewNames(const fs::path& folder, const std::map<std::string, std::string>& names)
{
    Record escaped;
    for (const auto& [from, to] : names) escaped[Escaped(from)] = Escaped(to);
    const auto renamed = [&](const std::string& name) {
        const auto found = escaped.find(name);
        return found != escaped.end() ? found->second : name;
    };
    std::string lines;
    for (const auto& [backup, original] : RecordOf(folder))
        if (escaped.count(backup) + escaped.count(original) > 0)
            lines += renamed(backup) + "\t" + renamed(original) + "\n";
    if (!lines.empty()) AppendLine(folder, lines);
}

const Backups::Record& Backups::RecordOf(const fs::path& folder)
{
    const auto [place, isNew] = m_records.try_emplace(folder);
    if (!isNew) return place->second;
    std::error_code error;
    if (!fs::is_regular_file(folder / RECORD, error)) return place->second;
    std::ifstream file(folder / RECORD);
    for (std::string line; std::getline(file, line);) {
        const size_t tab = line.find('\t');
        if (tab != std::string::npos)
            place->second.insert_or_assign(line.substr(0, tab), line.substr(tab + 1));
    }
    return place->second;
}
