// names: file names in folders and in archives, put right.
#ifndef CODETRANSCLI_NAMESCOMMAND_H
#define CODETRANSCLI_NAMESCOMMAND_H

#include <optional>
#include <string>
#include <vector>

#include "Commands.h"
#include "NameEncoding.h"
#include "NameJudge.h"

struct NamesOptions {
    std::vector<std::string> folders;
    std::string from;  // as typed
    bool apply = false;
    std::string undoList;  // where to write it; empty: a new file in the current folder
    std::string undo;      // the list to take back
    std::string archive, extractTo;
};

// Returns an ExitStatus, as these do, for each of its parts.
int Names(const CommonOptions& common, const NamesOptions& options);

int FolderNames(const CommonOptions& common, const NamesOptions& options, std::optional<NameEncoding> from);
int UndoNames(const CommonOptions& common, const NamesOptions& options);
int ArchiveNames(const CommonOptions& common, const NamesOptions& options, std::optional<NameEncoding> from);

// Remarks of one kind on standard error, of which only the first ten are told without --verbose.
class Remarks
{
public:
    explicit Remarks(const CommonOptions& common) : m_limit(common.verbose ? SIZE_MAX : 10) {}
    ~Remarks() { Finish(); }
    Remarks(const Remarks&) = delete;
    Remarks& operator=(const Remarks&) = delete;

    void Add(const std::string& name, const std::string& text);

    // Says how many were not told, once.
    void Finish();
    size_t Count() const { return m_count; }

private:
    size_t m_limit, m_count = 0;
    bool m_finished = false;
};

#endif  // CODETRANSCLI_NAMESCOMMAND_H
