#include "Inputs.h"

#include <fnmatch.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <system_error>

#include "Backups.h"
#include "Report.h"
#include "Source.h"

namespace fs = std::filesystem;

namespace
{
bool EndsIn(const std::string& name, const std::string& suffix)
{
    return !suffix.empty() && name.size() > suffix.size() &&
           name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0;
}

// By the name alone, or by the path where the pattern has a slash.
bool Fits(const fs::path& relative, const std::vector<std::string>& patterns)
{
    return std::any_of(patterns.begin(), patterns.end(), [&](const std::string& pattern) {
        const bool wholePath = pattern.find('/') != std::string::npos;
        const std::string text = wholePath ? relative : relative.filename();
        return fnmatch(pattern.c_str(), text.c_str(), 0) == 0;
    });
}

void AppendListed(const FileOptions& options, std::vector<std::string>& names)
{
    Source list(options.listFile);
    std::string_view rest = list.Fill(SIZE_MAX / 4);
    const char end = options.zeroSeparated ? '\0' : '\n';
    while (!rest.empty()) {
        const std::string_view name = rest.substr(0, rest.find(end));
        rest.remove_prefix(std::min(name.size() + 1, rest.size()));
        if (!name.empty()) names.emplace_back(name);
    }
}

class Walk
{
public:
    Walk(const FileOptions& options, const BackupOptions& backups, Inputs& inputs)
        : m_options(options), m_backupOptions(backups), m_inputs(inputs)
    {
    }

    void Folder(const fs::path& folder, const fs::path& top)
    {
        std::error_code error;
        std::vector<fs::path> entries;
        for (fs::directory_iterator i(folder, error), end; !error && i != end; i.increment(error))
            entries.push_back(i->path());
        if (error) Failed(folder, error.message());
        std::sort(entries.begin(), entries.end());
        for (const fs::path& entry : entries) Entry(entry, top);
    }

    void Failed(const fs::path& path, const std::string& why)
    {
        m_inputs.failures.push_back(Remark(path, why));
    }

private:
    void Entry(const fs::path& path, const fs::path& top)
    {
        std::error_code error;
        const fs::file_status status = fs::status(path, error);
        const std::string name = path.filename();
        if (fs::is_directory(status)) {
            if (fs::is_symlink(path, error))
                Skip(path, "a link to a folder");
            else if (IsVersionControl(name))
                Skip(path, "a folder of version control");
            else
                Folder(path, top);
        } else if (IsBackupRecord(name) || !IsWanted(path.lexically_relative(top))) {
            return;
        } else if (const std::string what = Backup(path); !what.empty()) {
            Skip(path, what);
        } else if (status.type() == fs::file_type::not_found && fs::is_symlink(path, error)) {
            Skip(path, "a link to " + fs::read_symlink(path, error).string() + ", which is missing");
        } else if (!fs::is_regular_file(status)) {
            Skip(path, "not a regular file");
        } else {
            m_inputs.files.push_back({path, path.lexically_relative(top), true});
        }
    }

    // What kind of backup, or empty.
    std::string Backup(const fs::path& path)
    {
        if (!m_backupOptions.passedOver) return {};
        if (EndsIn(path.filename(), m_backupOptions.suffix)) return "a backup";
        const std::string original = m_backups.OriginalOf(path);
        return original.empty() ? "" : "a backup of " + original;
    }

    bool IsWanted(const fs::path& relative) const
    {
        return (m_options.include.empty() || Fits(relative, m_options.include)) &&
               !Fits(relative, m_options.exclude);
    }

    void Skip(const fs::path& path, const std::string& why)
    {
        m_inputs.remarks.push_back(Remark(path, why + ", skipped"));
    }

    const FileOptions& m_options;
    const BackupOptions& m_backupOptions;
    Inputs& m_inputs;
    Backups m_backups;
};
}  // namespace

bool IsVersionControl(const std::string& name)
{
    return name == ".git" || name == ".hg" || name == ".svn";
}

Inputs CollectInputs(const FileOptions& options, const BackupOptions& backups)
{
    Inputs inputs;
    Walk walk(options, backups, inputs);
    std::vector<std::string> names = options.files;
    if (!options.listFile.empty()) AppendListed(options, names);
    for (const std::string& argument : names) {
        std::error_code error;
        if (argument == "-" || !fs::is_directory(argument, error))
            inputs.files.push_back({argument, fs::path(argument).filename(), false});
        else if (options.recursive)
            walk.Folder(argument, argument);
        else
            walk.Failed(argument, "is a folder; --recursive includes the files in it");
    }
    for (const Input& input : inputs.files) {
        std::error_code error;
        const uintmax_t size = fs::file_size(input.path, error);
        if (!error) inputs.bytes += size;
    }
    return inputs;
}

void Inputs::DropAliases()
{
    std::set<fs::path> seen;
    const auto known = [&](const Input& input) {
        std::error_code error;
        const fs::path real = fs::canonical(input.path, error);
        return !error && !seen.insert(real).second;
    };
    files.erase(std::remove_if(files.begin(), files.end(), known), files.end());
}
