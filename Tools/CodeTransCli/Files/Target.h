// A file that comes into being whole or not at all.
//
// The bytes go into a file without a name in the target's folder (with a name, .codetrans-*, where the file
// system has no such thing). Commit puts it in the target's place by one renaming. A file that replaces
// another one is flushed to the disk before, so that whatever ends the process or the machine leaves the old
// file or the new one. What is no regular file, such as a device or a pipe, is written directly.
//
// Flushing takes most of the time where files are small. So the steps of a commit can be taken one by one:
// many targets are prepared, the old files kept, all of it flushed together, and the new files put in place.
#ifndef CODETRANSCLI_TARGET_H
#define CODETRANSCLI_TARGET_H

#include <sys/stat.h>

#include <cstdint>
#include <string>
#include <string_view>

class Target
{
public:
    // "-" is standard output; a link is followed. Throws std::system_error, as all of it does.
    explicit Target(const std::string& path);
    ~Target();
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

    bool IsDirect() const { return m_direct; }
    void Write(std::string_view bytes);

    // Keeps the mode of the file replaced, and its owner where the system lets us; a new file gets the mode
    // of the source, if that is a file. Time stamps are the source's. What is written directly is at its end.
    void Prepare(const struct stat* source);

    // Flushes the file, if it replaces one, and puts it in its place. With a suffix, the file replaced stays
    // under its name and that, and is recorded as a backup; a file that is called so already is never
    // overwritten.
    void Commit(const std::string& backupSuffix);

    // The steps of Commit, apart from the flushing.
    void Keep(const std::string& backupSuffix);
    void Place();
    bool Replaces() const { return m_exists && !m_direct; }
    int Descriptor() const { return m_descriptor; }
    const std::string& Folder() const { return m_folder; }
    dev_t Device() const;

private:
    void OpenTemporary();
    void MakeLikeReplaced() const;
    void GiveName();

    std::string m_path, m_folder, m_temporary;  // m_temporary is empty while the file has no name
    int m_descriptor = -1;
    struct stat m_replaced = {};
    bool m_exists = false;
    bool m_direct = false;
    uint64_t m_written = 0, m_started = 0;  // bytes, and those of them that are on their way to the disk
};

// Makes renamings in it last. File systems that cannot flush a folder are left alone.
void FlushFolder(const std::string& folder);

#endif  // CODETRANSCLI_TARGET_H
