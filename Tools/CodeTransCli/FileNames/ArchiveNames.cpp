// Names in a zip archive: listed, and the archive extracted under them.
#include <sys/stat.h>

#include <iostream>
#include <map>
#include <memory>
#include <set>

#include "Extraction.h"
#include "NamesCommand.h"
#include "Report.h"
#include "ShownName.h"
#include "ZipArchive.h"

namespace
{
using Kind = NameVerdict::Kind;

// An entry under its right name.
struct Member {
    size_t number = 0;
    std::string name;
    Components components;
    bool isFolder = false;
};

// The verdicts on all names of `archive`. Those that say they are UTF-8 are.
NameJudgement JudgeArchive(const ZipArchive& archive, std::optional<NameEncoding> from)
{
    std::vector<std::string> silent;
    for (const ZipArchive::Entry& entry : archive.Entries())
        if (!entry.saysUtf8) silent.push_back(entry.name);
    const NameJudgement judged = JudgeNames(silent, {from, false, true});
    NameJudgement result{{}, judged.encoding};
    size_t next = 0;
    for (const ZipArchive::Entry& entry : archive.Entries())
        result.verdicts.push_back(entry.saysUtf8 ? NameVerdict() : judged.verdicts[next++]);
    return result;
}

std::string RefusalOf(const ZipArchive::Entry& entry)
{
    if (entry.encrypted) return "is encrypted";
    const unsigned type = entry.mode & S_IFMT;
    if (type == S_IFLNK) return "is a symbolic link";
    if (type != 0 && type != S_IFREG && type != S_IFDIR) return "is neither a file nor a folder";
    return {};
}

class Extraction
{
public:
    Extraction(const ZipArchive& archive, const std::string& path, Remarks& refusals, Remarks& failures)
        : m_archive(archive), m_folder(path), m_refusals(refusals), m_failures(failures)
    {
    }

    void Add(size_t number, const std::string& name)
    {
        const std::string refusal = RefusalOf(m_archive.Entries()[number]);
        if (!refusal.empty()) {
            m_refusals.Add(name, refusal + ", not extracted");
            return;
        }
        try {
            const bool isFolder =
                name.back() == '/' || name.back() == '\\' || S_ISDIR(m_archive.Entries()[number].mode);
            m_members.push_back({number, name, ComponentsOf(name), isFolder});
        } catch (const Refusal& refused) {
            m_refusals.Add(name, std::string(refused.what()) + ", not extracted");
        }
    }

    size_t Run()
    {
        size_t done = 0;
        CountPaths();
        for (const Member& member : m_members) {
            try {
                if (member.components.empty()) continue;
                if (!member.isFolder && m_files[member.components] > 1)
                    throw Refusal("another entry has the same name");
                Extract(member);
                ++done;
            } catch (const Refusal& refused) {
                m_refusals.Add(member.name, std::string(refused.what()) + ", not extracted");
            } catch (const std::runtime_error& error) {
                m_failures.Add(member.name, error.what());
            }
        }
        return done;
    }

    // Throws Refusal where the contents cannot be what the archive says.
    void CheckSizes(uint64_t archiveBytes) const
    {
        unsigned long long size = 0, compressed = 0;
        for (const ZipArchive::Entry& entry : m_archive.Entries())
            if (__builtin_add_overflow(size, entry.size, &size) ||
                __builtin_add_overflow(compressed, entry.compressedSize, &compressed))
                throw Refusal("declares sizes that are too large");
        if (compressed > archiveBytes) throw Refusal("has overlapping entries, as in a zip bomb");
        if (size > m_folder.Room())
            throw Refusal("would take " + std::to_string(size) +
                          " bytes, which is more than there is room for");
    }

private:
    void CountPaths()
    {
        for (const Member& member : m_members)
            if (!member.isFolder) ++m_files[member.components];
    }

    void Extract(const Member& member) const
    {
        const ZipArchive::Entry& entry = m_archive.Entries()[member.number];
        if (member.isFolder) {
            m_folder.MakeFolder(member.components);
            return;
        }
        ExtractionFolder::File file(m_folder, member.components, (entry.mode & S_IXUSR) != 0);
        m_archive.Read(member.number, [&](std::string_view bytes) { file.Write(bytes); });
        file.Keep(entry.time);
    }

    const ZipArchive& m_archive;
    const ExtractionFolder m_folder;
    Remarks& m_refusals;
    Remarks& m_failures;
    std::vector<Member> m_members;
    std::map<Components, size_t> m_files;
};

int List(const CommonOptions& common, const NamesOptions& options, std::optional<NameEncoding> from)
{
    const ZipArchive archive(options.archive);
    const NameJudgement judgement = JudgeArchive(archive, from);
    Remarks refusals(common), failures(common);
    std::unique_ptr<Extraction> extraction;
    if (!options.extractTo.empty()) {
        extraction = std::make_unique<Extraction>(archive, options.extractTo, refusals, failures);
        struct stat status = {};
        if (stat(options.archive.c_str(), &status) == 0)
            extraction->CheckSizes(static_cast<uint64_t>(status.st_size));
    }
    for (size_t i = 0; i < archive.Entries().size(); ++i) {
        const std::string& raw = archive.Entries()[i].name;
        const NameVerdict& verdict = judgement.verdicts[i];
        const std::string& name = verdict.kind == Kind::WRONG ? verdict.name : raw;
        if (verdict.kind == Kind::UNDECIDED) refusals.Add(raw, verdict.why);
        if (extraction == nullptr)
            std::cout << ShownName(name) << '\n';
        else if (verdict.kind != Kind::UNDECIDED && !name.empty())
            extraction->Add(i, name);
    }
    if (judgement.encoding && !common.quiet && !from)
        std::cerr << "codetrans: " << ShownName(options.archive) << ": names not marked as UTF-8 are read as "
                  << TitleOf(*judgement.encoding) << '\n';
    if (extraction != nullptr) {
        const size_t done = extraction->Run();
        refusals.Finish();
        failures.Finish();
        if (!common.quiet)
            std::cerr << "codetrans: " << done << " of " << archive.Entries().size() << " extracted\n";
    }
    if (!std::cout.flush() || failures.Count() > 0) return FAILED;
    return refusals.Count() > 0 ? NOT_DONE : DONE;
}
}  // namespace

int ArchiveNames(const CommonOptions& common, const NamesOptions& options, std::optional<NameEncoding> from)
{
    try {
        return List(common, options, from);
    } catch (const Refusal& refused) {
        std::cerr << "codetrans: " << ShownName(options.archive) << ": " << refused.what()
                  << ", nothing extracted\n";
        return NOT_DONE;
    } catch (const std::runtime_error& error) {
        std::cerr << "codetrans: " << ShownName(options.archive) << ": " << error.what() << '\n';
        return FAILED;
    }
}
