#include "NamesCommand.h"

#include <iostream>

#include "Encoding.h"
#include "Report.h"
#include "Session.h"
#include "ShownName.h"

namespace
{
std::optional<NameEncoding> NameEncodingNamed(const std::string& name)
{
    if (name == "cp437" || name == "CP437") return NameEncoding::CP437;
    const Encoding* const encoding = FindEncoding(name).encoding;
    if (encoding == &UTF8) return NameEncoding::UTF_8;
    if (encoding == &GBK) return NameEncoding::GB;
    if (encoding == &BIG5) return NameEncoding::BIG_5;
    return std::nullopt;
}

// What is wrong with options that the parser takes one by one, or nothing.
std::string WrongUsage(const NamesOptions& options)
{
    const int works = !options.folders.empty() + !options.archive.empty() + !options.undo.empty();
    if (works == 0) return "names needs a FOLDER, --zip ARCHIVE or --undo FILE";
    if (works > 1) return "a FOLDER, --zip and --undo exclude each other";
    if (!options.extractTo.empty() && options.archive.empty()) return "--extract-to needs --zip";
    if (options.apply && options.folders.empty()) return "--apply needs a FOLDER";
    if (!options.undoList.empty() && !options.apply) return "--undo-list needs --apply";
    if (!options.from.empty() && !options.undo.empty()) return "--undo and --from exclude each other";
    if (!options.from.empty() && !NameEncodingNamed(options.from))
        return "'" + options.from + "' is not a known encoding of names; use gbk, big5, utf-8 or cp437";
    return {};
}
}  // namespace

void Remarks::Finish()
{
    if (m_count > m_limit && !m_finished)
        std::cerr << "codetrans: ... and " << m_count - m_limit << " more (--verbose shows all)\n";
    m_finished = true;
}

void Remarks::Add(const std::string& name, const std::string& text)
{
    if (++m_count <= m_limit) std::cerr << "codetrans: " + ShownName(name) + ": " + text + "\n";
}

int Names(const CommonOptions& common, const NamesOptions& options)
{
    const std::string wrong = WrongUsage(options);
    if (!wrong.empty()) {
        std::cerr << "codetrans: " << wrong << '\n';
        return WRONG_USAGE;
    }
    if (!options.undo.empty()) return UndoNames(common, options);
    if (!Begin(common)) return FAILED;
    const std::optional<NameEncoding> from = NameEncodingNamed(options.from);
    return options.archive.empty() ? FolderNames(common, options, from) : ArchiveNames(common, options, from);
}
