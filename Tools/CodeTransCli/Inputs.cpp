#include "Inputs.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <system_error>

#include "Backups.h"
#include "Report.h"

namespace fs = std::filesystem;

namespace
{
bool EndsIn(const std::string& name, const std::string& suffix)
{
    return !suffix.empty() && name.size() > suffix.size() &&
           name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0;
}

bool IsVersionControl(const std::string& name)
{
    return name == ".git" || name == ".hg" || name == ".svn";
}

class Walk
{
public:
    Walk(const WalkOptions& options, Inputs& inputs) : m_options(options), m_inputs(inputs) {}

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
        } else if (IsBackupRecord(name)) {
            return;
        } else if (const std::string what = Backup(path); !what.empty()) {
            Skip(path, what);
        } else if (status.type() == fs::file_type::not_found && fs::is_symlink(path, error)) {
            Skip(path, "a link to " + fs::read_symlink(path, error).string() + ", which is missing");
        } else if (!fs::is_regular_file(status)) {
            Skip(path, "no regular file");
        } else {
            m_inputs.files.push_back({path, path.lexically_relative(top), true});
        }
    }

    // What kind of backup, or empty.
    std::string Backup(const fs::path& path)
    {
        if (!m_options.passOverBackups) return {};
        if (EndsIn(path.filename(), m_options.backupSuffix)) return "a backup";
        const std::string original = m_backups.OriginalOf(path);
        return original.empty() ? "" : "a backup of " + original;
    }

    void Skip(const fs::path& path, const std::string& why)
    {
        m_inputs.remarks.push_back(Remark(path, why + ", skipped"));
    }

    const WalkOptions& m_options;
    Inputs& m_inputs;
    Backups m_backups;
};
}  // namespace

Inputs CollectInputs(const std::vector<std::string>& arguments, const WalkOptions& options)
{
    Inputs inputs;
    Walk walk(options, inputs);
    for (const std::string& argument : arguments) {
        std::error_code error;
        if (argument == "-" || !fs::is_directory(argument, error))
            inputs.files.push_back({argument, fs::path(argument).filename(), false});
        else if (options.recursive)
            walk.Folder(argument, argument);
        else
            walk.Failed(argument, "is a folder; --recursive walks it");
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
