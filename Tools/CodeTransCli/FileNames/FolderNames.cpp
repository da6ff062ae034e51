// Names in folders: shown, renamed, and put back.
#include <algorithm>
#include <climits>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <map>
#include <set>

#include "Backups.h"
#include "NameTree.h"
#include "NamesCommand.h"
#include "Report.h"
#include "ShownName.h"
#include "UndoList.h"

namespace fs = std::filesystem;

namespace
{
using Kind = NameVerdict::Kind;

std::string Plural(size_t count, const std::string& noun)
{
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

// A folder, and what the names in it become.
class Tree
{
public:
    Tree(const std::string& folder, std::optional<NameEncoding> from) : m_tree(folder)
    {
        std::vector<std::string> names;
        for (size_t i = 1; i < m_tree.nodes.size(); ++i) names.push_back(m_tree.nodes[i].name);
        m_verdicts = JudgeNames(names, {from, true, false}).verdicts;
        m_verdicts.insert(m_verdicts.begin(), NameVerdict());  // the folder's own name stays
        std::error_code error;
        m_real = fs::canonical(folder, error).string() + (fs::path(folder).has_filename() ? "" : "/");
    }

    const std::vector<std::string>& Failures() const { return m_tree.failures; }
    size_t Size() const { return m_verdicts.size(); }
    const NameVerdict& Verdict(size_t i) const { return m_verdicts[i]; }
    std::string PathOf(size_t i) const { return m_tree.PathOf(i); }

    std::string Line(size_t i) const
    {
        return ShownFolder(i) + ShownName(m_tree.nodes[i].name) + " -> " + ShownName(m_verdicts[i].name) +
               "\n";
    }

    // The names that cannot become what they should.
    void AddCollisions(Remarks& remarks) const
    {
        // In each folder, how many have or would get each name.
        std::map<size_t, std::map<std::string, size_t>> names;
        for (size_t i = 1; i < Size(); ++i) {
            ++names[m_tree.nodes[i].parent][m_tree.nodes[i].name];
            if (m_verdicts[i].kind == Kind::WRONG) ++names[m_tree.nodes[i].parent][m_verdicts[i].name];
        }
        for (size_t i = 1; i < Size(); ++i) {
            if (m_verdicts[i].kind != Kind::WRONG) continue;
            const std::string& name = m_verdicts[i].name;
            if (names[m_tree.nodes[i].parent][name] > 1)
                remarks.Add(PathOf(i), "would become " + ShownName(name) +
                                           ", a name that another file there has or would get");
            else if (name.size() > NAME_MAX)
                remarks.Add(PathOf(i), "would become longer than a file name can be");
        }
    }

    // What is in a folder comes before the folder.
    void AddRenamings(std::vector<Renaming>& renamings, std::vector<std::string>& lines) const
    {
        for (size_t i = Size() - 1; i > 0; --i) {
            if (m_verdicts[i].kind != Kind::WRONG) continue;
            renamings.push_back({m_real + m_tree.FolderOf(i).substr(m_tree.PathOf(0).size()),
                                 m_tree.nodes[i].name, m_verdicts[i].name});
            lines.push_back(Line(i));
        }
    }

private:
    // As it will be.
    std::string ShownFolder(size_t i) const
    {
        const size_t parent = m_tree.nodes[i].parent;
        const std::string& name =
            m_verdicts[parent].kind == Kind::WRONG ? m_verdicts[parent].name : m_tree.nodes[parent].name;
        const std::string above = parent == 0 ? "" : ShownFolder(parent);
        return above + ShownName(name) + (name.back() == '/' ? "" : "/");
    }

    NameTree m_tree;
    std::vector<NameVerdict> m_verdicts;
    std::string m_real;  // the folder's absolute path
};

// The first of `folders` that is another one, or in it.
std::string InAnother(const std::vector<std::string>& folders)
{
    std::set<fs::path> reals;
    for (const std::string& folder : folders) {
        std::error_code error;
        if (const fs::path real = fs::canonical(folder, error); !error && !reals.insert(real).second)
            return folder;
    }
    for (const std::string& folder : folders) {
        std::error_code error;
        for (fs::path above = fs::canonical(folder, error); !error && above != above.parent_path();) {
            above = above.parent_path();
            if (reals.count(above) > 0) return folder;
        }
    }
    return {};
}

void RecordBackups(const std::vector<Renaming>& renamings)
{
    std::map<std::string, std::map<std::string, std::string>> names;  // by folder
    for (const Renaming& renaming : renamings) names[renaming.folder][renaming.from] = renaming.to;
    for (const auto& [folder, changes] : names) RecordNewNames(folder, changes);
}

int Apply(const CommonOptions& common, const std::string& chosenList, const std::vector<Renaming>& renamings,
          const std::vector<std::string>& lines)
{
    const std::string list = chosenList.empty() ? NewUndoListName() : chosenList;
    WriteUndoList(list, renamings);
    RecordBackups(renamings);
    size_t renamed = 0;
    std::string told;  // at the end, so that a reader that stops does not end the work
    Remarks remarks(common);
    for (size_t i = 0; i < renamings.size(); ++i) {
        const int error = renamings[i].Do();
        if (error == 0) {
            ++renamed;
            told += lines[i];
        } else {
            remarks.Add(renamings[i].folder + "/" + renamings[i].from,
                        std::string("cannot be renamed: ") + strerror(error));
        }
    }
    std::cout << told;
    remarks.Finish();
    if (!common.quiet)
        std::cerr << "codetrans: " << Plural(renamed, "name") << " changed; 'codetrans names --undo "
                  << ShownName(list) << "' restores them\n";
    return remarks.Count() == 0 ? DONE : FAILED;
}

int Worse(int one, int other)
{
    return one == FAILED || other == FAILED ? FAILED : std::max(one, other);
}
}  // namespace

int FolderNames(const CommonOptions& common, const NamesOptions& options, std::optional<NameEncoding> from)
{
    if (const std::string inner = InAnother(options.folders); !inner.empty()) {
        std::cerr << "codetrans: " << ShownName(inner)
                  << ": is given twice, or is inside another folder that is given\n";
        return WRONG_USAGE;
    }
    std::vector<Renaming> renamings;
    std::vector<std::string> lines;
    Remarks undecided(common), collisions(common);
    bool unread = false;
    for (const std::string& folder : options.folders) {
        const Tree tree(folder, from);
        for (const std::string& failure : tree.Failures()) std::cerr << failure;
        unread = unread || !tree.Failures().empty();
        for (size_t i = 1; i < tree.Size(); ++i) {
            const NameVerdict& verdict = tree.Verdict(i);
            if (verdict.kind == Kind::UNDECIDED) undecided.Add(tree.PathOf(i), verdict.why);
            if (verdict.kind == Kind::RIGHT && common.verbose)
                std::cerr << "codetrans: " << ShownName(tree.PathOf(i)) << ": unchanged\n";
        }
        tree.AddCollisions(collisions);
        tree.AddRenamings(renamings, lines);
    }
    undecided.Finish();
    collisions.Finish();
    int status = unread ? FAILED : undecided.Count() + collisions.Count() > 0 ? NOT_DONE : DONE;
    const bool refused = unread || collisions.Count() > 0;
    if (options.apply && refused) {
        std::cerr << "codetrans: nothing was renamed\n";
    } else if (options.apply && !renamings.empty()) {
        status = Worse(status, Apply(common, options.undoList, renamings, lines));
    } else {
        for (size_t i = lines.size(); i-- > 0;) std::cout << lines[i];
        if (!common.quiet)
            std::cerr << "codetrans: " << Plural(lines.size(), "name") << " to change"
                      << (lines.empty() || refused ? "\n" : "; --apply renames them\n");
    }
    return std::cout.flush() ? status : static_cast<int>(FAILED);
}

int UndoNames(const CommonOptions& common, const NamesOptions& options)
{
    std::vector<Renaming> renamings;
    try {
        renamings = ReadUndoList(options.undo);
    } catch (const std::exception& error) {
        std::cerr << "codetrans: " << ShownName(options.undo) << ": " << error.what() << '\n';
        return FAILED;
    }
    size_t changed = 0, unchanged = 0;
    Remarks remarks(common);
    for (size_t i = renamings.size(); i-- > 0;) {
        const Renaming back{renamings[i].folder, renamings[i].to, renamings[i].from};
        std::error_code error;
        const bool isBack = !fs::exists(fs::symlink_status(back.folder + "/" + back.from, error)) &&
                            fs::exists(fs::symlink_status(back.folder + "/" + back.to, error));
        const int failure = isBack ? 0 : back.Do();
        changed += !isBack && failure == 0;
        unchanged += isBack;
        if (failure != 0)
            remarks.Add(back.folder + "/" + back.from,
                        std::string("cannot be renamed: ") + strerror(failure));
    }
    remarks.Finish();
    if (!common.quiet)
        std::cerr << "codetrans: " << Plural(changed, "name") << " restored"
                  << (unchanged > 0 ? ", " + std::to_string(unchanged) + " already as before\n" : "\n");
    return remarks.Count() == 0 ? DONE : FAILED;
}
