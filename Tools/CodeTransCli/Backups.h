// Which files are backups, so that none is converted with the folder that it lies in.
//
// Beside each backup lies a record, .codetrans.backups: a line for each backup with its name, a tab and the
// name of the file that it keeps. Control characters and backslashes stand there as \x09.
#ifndef CODETRANSCLI_BACKUPS_H
#define CODETRANSCLI_BACKUPS_H

#include <filesystem>
#include <map>
#include <string>

bool IsBackupRecord(const std::string& name);

// Both names without a folder. Throws std::system_error.
void RecordBackup(const std::string& folder, const std::string& backup, const std::string& original);

class Backups
{
public:
    // The name of the file that `path` is a backup of: by the record, or because it is called like the file
    // beside it and .orig, .bak or ~. Empty if it is none. Links are followed.
    std::string OriginalOf(const std::filesystem::path& path);

    // Records the backups in a folder under the names that they and their originals are going to have, too:
    // `names` has the new name of each old one. Throws std::system_error.
    void RecordNewNames(const std::filesystem::path& folder, const std::map<std::string, std::string>& names);

private:
    // Backups and originals, as they stand in the record.
    using Record = std::map<std::string, std::string>;
    const Record& RecordOf(const std::filesystem::path& folder);

    std::map<std::filesystem::path, Record> m_records;
};

#endif  // CODETRANSCLI_BACKUPS_H
