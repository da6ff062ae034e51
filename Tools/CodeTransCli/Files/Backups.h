// Which files are backups, so that none is converted with the folder that it lies in.
//
// Beside each backup lies a record, .codetrans.backups: a line for each backup with its name, the name of the
// file that it keeps, and a fingerprint of what that file became, separated by tabs. Control characters and
// backslashes in names stand there as \x09.
#ifndef CODETRANSCLI_BACKUPS_H
#define CODETRANSCLI_BACKUPS_H

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

bool IsBackupRecord(const std::string& name);

struct Backup {
    std::string name, original;  // without a folder
    std::string fingerprint;     // of the converted file
};

// The record is not flushed to the disk. Throws std::system_error, as the others do.
void RecordBackup(const std::string& folder, const Backup& backup);
void FlushBackupRecord(const std::string& folder);

// In the order in which they were made; none where there is no record.
std::vector<Backup> RecordedBackups(const std::filesystem::path& folder);

// Records the backups in a folder under the names that they and their originals are going to have, too:
// `names` has the new name of each old one.
void RecordNewNames(const std::filesystem::path& folder, const std::map<std::string, std::string>& names);

// Writes the record anew, without `gone`; removes an empty one.
void ForgetBackups(const std::filesystem::path& folder, const std::set<std::string>& gone);

// Of the file that `descriptor` is open on: its size and a checksum of its bytes (64-bit FNV-1a).
std::string Fingerprint(int descriptor);

class Backups
{
public:
    // The name of the file that `path` is a backup of: by the record, or because it is called like the file
    // beside it and .orig, .bak or ~. Empty if it is none. Links are followed.
    std::string OriginalOf(const std::filesystem::path& path);

private:
    using Record = std::map<std::string, std::string>;  // backups and originals
    const Record& RecordOf(const std::filesystem::path& folder);

    std::map<std::filesystem::path, Record> m_records;
};

#endif  // CODETRANSCLI_BACKUPS_H
