// restore: puts back what convert --backup kept.
//
// The backup takes the place of the converted file by one renaming, so that all of it, its time stamps and
// mode too, is as it was. Whether the converted file was edited since is told by the fingerprint in the
// record; without one, by its time stamp, which conversion leaves as it was.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <map>

#include "Backups.h"
#include "Commands.h"
#include "Inputs.h"
#include "Report.h"
#include "Source.h"
#include "Target.h"

namespace fs = std::filesystem;

namespace
{
class Restorer
{
public:
    Restorer(const CommonOptions& common, const RestoreOptions& options)
        : m_common(common), m_options(options)
    {
    }

    void Argument(const std::string& path)
    {
        std::error_code error;
        if (fs::is_directory(path, error))
            Folder(path);
        else
            File(path);
    }

    int Finish()
    {
        for (const auto& [folder, names] : m_gone) ForgetBackups(folder, names);
        if (!m_common.quiet)
            std::cerr << "codetrans: " << m_restored << (m_options.dryRun ? " would be" : "") << " restored"
                      << (m_refused > 0 ? ", " + std::to_string(m_refused) + " refused" : "")
                      << (m_failed > 0 ? ", " + std::to_string(m_failed) + " failed" : "") << '\n';
        return m_failed > 0 ? FAILED : m_refused > 0 ? NOT_DONE : DONE;
    }

private:
    void Folder(const fs::path& folder)
    {
        std::map<std::string, Backup> last;  // by original: the one made last
        if (m_options.backupSuffix.empty())
            for (const Backup& backup : RecordedBackups(folder)) last[backup.original] = backup;
        std::error_code error;
        std::vector<fs::path> folders;
        for (fs::directory_iterator i(folder, error), end; !error && i != end; i.increment(error)) {
            const std::string name = i->path().filename();
            const size_t length = name.size() - std::min(name.size(), m_options.backupSuffix.size());
            const bool isBackup = length > 0 && name.substr(length) == m_options.backupSuffix;
            if (i->is_directory(error) && !i->is_symlink(error))
                folders.push_back(i->path());
            else if (!m_options.backupSuffix.empty() && isBackup)
                last[name.substr(0, length)] = Recorded(folder, {name, name.substr(0, length), {}});
        }
        for (const auto& [original, backup] : last)
            if (fs::exists(folder / backup.name, error)) Try(folder, backup);
        if (!m_options.input.recursive) return;
        for (const fs::path& inner : folders)
            if (!IsVersionControl(inner.filename())) Folder(inner);
    }

    void File(const fs::path& path)
    {
        const fs::path folder = path.has_parent_path() ? path.parent_path() : ".";
        const std::string name = path.filename();
        Backup found;
        if (!m_options.backupSuffix.empty())
            found = Recorded(folder, {name + m_options.backupSuffix, name, {}});
        else
            for (const Backup& backup : RecordedBackups(folder))
                if (backup.original == name) found = backup;
        std::error_code error;
        if (!found.name.empty() && fs::exists(folder / found.name, error)) return Try(folder, found);
        ++m_refused;
        std::cerr << Remark(path, "no backup is recorded; give its suffix with --backup SUFFIX");
    }

    // With the fingerprint, if the record has one.
    static Backup Recorded(const fs::path& folder, Backup backup)
    {
        for (const Backup& known : RecordedBackups(folder))
            if (known.name == backup.name && known.original == backup.original) backup = known;
        return backup;
    }

    void Try(const fs::path& folder, const Backup& backup)
    {
        const fs::path original = folder / backup.original;
        try {
            if (!m_options.force && WasEdited(folder, backup)) {
                ++m_refused;
                std::cerr << Remark(
                    original, "not restored: it was changed after the conversion (--force restores it)");
                return;
            }
            if (!m_options.dryRun) {
                fs::rename(folder / backup.name, original);
                FlushFolder(folder);
                m_gone[folder].insert(backup.name);
            }
            ++m_restored;
            if (m_common.verbose || m_options.dryRun)
                std::cerr << Remark(
                    original,
                    (m_options.dryRun ? "would be restored from " : "restored from ") + backup.name);
        } catch (const std::exception& error) {
            ++m_failed;
            std::cerr << Remark(original, error.what());
        }
    }

    static bool WasEdited(const fs::path& folder, const Backup& backup)
    {
        const fs::path original = folder / backup.original;
        std::error_code error;
        if (!fs::exists(fs::symlink_status(original, error))) return false;
        if (backup.fingerprint.empty())
            return fs::last_write_time(original) != fs::last_write_time(folder / backup.name);
        const int descriptor = open(original.c_str(), O_RDONLY | O_CLOEXEC);
        if (descriptor < 0) Fail("cannot open");
        const std::string now = Fingerprint(descriptor);
        close(descriptor);
        return now != backup.fingerprint;
    }

    const CommonOptions& m_common;
    const RestoreOptions& m_options;
    std::map<fs::path, std::set<std::string>> m_gone;
    size_t m_restored = 0, m_refused = 0, m_failed = 0;
};
}  // namespace

int Restore(const CommonOptions& common, const RestoreOptions& options)
{
    Restorer restorer(common, options);
    for (const std::string& path : options.input.files) restorer.Argument(path);
    return restorer.Finish();
}
