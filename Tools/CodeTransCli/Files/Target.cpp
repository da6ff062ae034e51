#include "Target.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "Backups.h"
#include "Source.h"

namespace fs = std::filesystem;

namespace
{
// The file that a link leads to, so that the link stays.
std::string Followed(const std::string& path)
{
    std::error_code error;
    if (!fs::is_symlink(path, error)) return path;
    const fs::path real = fs::canonical(path, error);
    if (error) throw std::system_error(error, path + " is a link to " + fs::read_symlink(path).string());
    return real;
}

std::string FolderOf(const std::string& path)
{
    const std::string folder = fs::path(path).parent_path();
    return folder.empty() ? "." : folder;
}

mode_t ModeOfNewFiles()
{
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

bool SameFile(const std::string& a, const std::string& b)
{
    std::error_code error;
    return fs::equivalent(a, b, error);
}

// A second name is enough, for the renaming leaves the old file alone. File systems without them get a copy.
void KeepAs(const std::string& path, const std::string& backup)
{
    if (link(path.c_str(), backup.c_str()) == 0 || (errno == EEXIST && SameFile(path, backup))) return;
    const bool noSecondNames = errno == EPERM || errno == ENOTSUP || errno == EMLINK;
    if (!noSecondNames) Fail("cannot keep the old file as " + backup);
    std::error_code error;
    fs::copy_file(path, backup, error);
    if (error) throw std::system_error(error, "cannot keep the old file as " + backup);
}
}  // namespace

Target::Target(const std::string& path)
    : m_path(path == "-" ? path : Followed(path)), m_folder(FolderOf(m_path))
{
    m_exists = path != "-" && stat(m_path.c_str(), &m_replaced) == 0;
    m_direct = path == "-" || (m_exists && !S_ISREG(m_replaced.st_mode));
    if (!m_direct)
        OpenTemporary();
    else
        m_descriptor = path == "-" ? dup(STDOUT_FILENO) : open(m_path.c_str(), O_WRONLY | O_CLOEXEC);
    if (m_descriptor < 0) Fail("cannot write " + m_path);
}

Target::~Target()
{
    if (m_descriptor >= 0) close(m_descriptor);
    if (!m_temporary.empty()) unlink(m_temporary.c_str());
}

void Target::OpenTemporary()
{
    // Without /proc, a file without a name could not be given one.
    if (access("/proc/self/fd", X_OK) == 0)
        m_descriptor = open(m_folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (m_descriptor >= 0) return;
    std::string name = m_folder + "/.codetrans-XXXXXX";
    m_descriptor = mkostemp(name.data(), O_CLOEXEC);
    if (m_descriptor < 0) Fail("cannot create a temporary file in " + m_folder);
    m_temporary = name;
}

void Target::Write(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = write(m_descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR)
            Fail("cannot write " + (m_path == "-" ? "standard output" : m_path));
        if (written <= 0) continue;
        bytes.remove_prefix(static_cast<size_t>(written));
        m_written += static_cast<uint64_t>(written);
    }
    // The disk need not wait for the end of a large file that will be flushed.
    constexpr uint64_t STRETCH = 8 << 20;
    if (!m_exists || m_direct || m_written - m_started < STRETCH) return;
    sync_file_range(m_descriptor, static_cast<off_t>(m_started), static_cast<off_t>(m_written - m_started),
                    SYNC_FILE_RANGE_WRITE);
    m_started = m_written;
}

// Only root may give a file away; the group is often possible where the owner is not. A file that could not
// keep its owner must not run as the new one, nor may a new group read what the old one could.
void Target::MakeLikeReplaced() const
{
    const bool owned = fchown(m_descriptor, m_replaced.st_uid, m_replaced.st_gid) == 0;
    const bool grouped = owned || fchown(m_descriptor, static_cast<uid_t>(-1), m_replaced.st_gid) == 0;
    const mode_t kept = owned ? 07777 : grouped ? 0777 : 0707;
    if (fchmod(m_descriptor, m_replaced.st_mode & kept) != 0) Fail("cannot set the mode");
}

void Target::GiveName()
{
    const std::string held = "/proc/self/fd/" + std::to_string(m_descriptor);
    for (int attempt = 0; m_temporary.empty(); ++attempt) {
        const std::string name =
            m_folder + "/.codetrans-" + std::to_string(getpid()) + "-" + std::to_string(attempt);
        if (linkat(AT_FDCWD, held.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0)
            m_temporary = name;
        else if (errno != EEXIST)
            Fail("cannot name the new file in " + m_folder);
    }
}

void FlushFolder(const std::string& folder)
{
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    const bool flushed = fsync(descriptor) == 0 || errno == EINVAL;
    close(descriptor);
    if (!flushed) Fail("cannot flush " + folder);
}

dev_t Target::Device() const
{
    struct stat status = {};
    return fstat(m_descriptor, &status) == 0 ? status.st_dev : 0;
}

void Target::Commit(const std::string& backupSuffix)
{
    if (m_direct) return;
    Keep(backupSuffix);
    if (!backupSuffix.empty()) FlushBackupRecord(m_folder);
    if (m_exists && fsync(m_descriptor) != 0) Fail("cannot flush the new file");
    Place();
    if (m_exists) FlushFolder(m_folder);
}

void Target::Prepare(const struct stat* source)
{
    if (m_direct) {
        const int descriptor = m_descriptor;
        m_descriptor = -1;
        if (close(descriptor) != 0) Fail("cannot write " + m_path);
        return;
    }
    const bool fromFile = source != nullptr && S_ISREG(source->st_mode);
    if (m_exists)
        MakeLikeReplaced();
    else if (fchmod(m_descriptor, fromFile ? source->st_mode & 0777 : ModeOfNewFiles()) != 0)
        Fail("cannot set the mode");
    if (fromFile) {
        const struct timespec times[2] = {source->st_atim, source->st_mtim};
        if (futimens(m_descriptor, times) != 0) Fail("cannot set the time stamps");
    }
}

void Target::Keep(const std::string& backupSuffix)
{
    if (m_direct || backupSuffix.empty()) return;
    KeepAs(m_path, m_path + backupSuffix);
    const std::string name = fs::path(m_path).filename();
    RecordBackup(m_folder, {name + backupSuffix, name, Fingerprint(m_descriptor)});
}

void Target::Place()
{
    if (m_direct) return;
    if (m_temporary.empty()) GiveName();
    if (rename(m_temporary.c_str(), m_path.c_str()) != 0) Fail("cannot replace " + m_path);
    m_temporary.clear();
}
