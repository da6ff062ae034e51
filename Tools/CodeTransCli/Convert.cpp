// convert: files into another encoding, whole or not at all.
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <set>

#include "Commands.h"
#include "Conversion.h"
#include "Decision.h"
#include "Encoding.h"
#include "Identity.h"
#include "Names.h"
#include "Session.h"
#include "Source.h"
#include "StrayLines.h"
#include "Target.h"

namespace fs = std::filesystem;

namespace
{
constexpr size_t LOSSES_SHOWN = 10, LOSSES_SHOWN_VERBOSE = 10'000;

// Without a word from the user, UTF-16LE gets a mark, so that it is known for what it is.
bool WantsMark(const ConvertOptions& options)
{
    return options.mark.value_or(options.to == ENCODE_UNICODE);
}

std::string Characters(size_t count)
{
    return std::to_string(count) + (count == 1 ? " character" : " characters");
}

// One file on its way.
class Conversion
{
public:
    Conversion(const CommonOptions& common, const ConvertOptions& options, const Input& input,
               const Workers::Progress& progress)
        : m_common(common), m_options(options), m_input(input), m_progress(progress), m_source(input.path)
    {
    }

    Report Run()
    {
        const Decision decision = Decide(m_source.Bytes(), m_options);
        m_identity = decision.identity;
        if (!m_identity.doubt.empty()) return Passed();
        if (const Losses stray = Stray(decision.same); stray.count > 0) return Mixed(stray);
        return decision.same ? Same(decision.reached) : Other();
    }

private:
    // What stands in another encoding than the rest. A conversion finds by itself what it cannot read.
    Losses Stray(bool same) const
    {
        const std::string_view text = m_source.Bytes().substr(m_identity.mark);
        Losses stray;
        if (!m_options.force) stray = FindUtf8Lines(text, m_identity.code, Shown());
        if (same && stray.count == 0) stray = FindUnreadable(text, m_identity.code, Shown());
        return stray;
    }

    Report Mixed(const Losses& stray) const
    {
        const std::string name = EncodingName(m_identity.code);
        const bool readable = m_identity.code != m_options.to;  // though not as it was meant
        return {Outcome::REFUSED,
                {},
                Described(stray) +
                    Remark(m_input.path, "not converted: not all of it is " + name +
                                             "; it is damaged or in several encodings" +
                                             (readable ? "; --from " + name + " --force converts it" : ""))};
    }

    Report Passed()
    {
        m_progress(m_source.Bytes().size());
        if (m_identity.binary && !m_options.from && m_input.walked)
            return {Outcome::SKIPPED, {}, m_common.quiet ? "" : Remark(m_input.path, "binary, skipped")};
        return {Outcome::UNDECIDED, {}, Remark(m_input.path, "not converted: " + m_identity.doubt)};
    }

    // Already as wanted, but for the mark perhaps, if the user asked for one or none.
    Report Same(bool reached)
    {
        const bool marked = m_identity.mark != 0;
        const bool wanted = m_source.Bytes().empty() ? marked : m_options.mark.value_or(marked);
        const bool changes = marked != wanted;
        if (changes || !m_options.inPlace) {
            Target target(OutName());
            if (wanted) target.Write(ByteOrderMark(m_options.to));
            target.Write(m_source.Bytes().substr(m_identity.mark));
            Commit(target);
        }
        m_progress(m_source.Bytes().size());
        if (changes) return Done(marked ? "byte-order mark removed" : "byte-order mark added");
        const std::string what =
            m_source.Bytes().empty() ? "is empty" : std::string("is ") + Already() + " already";
        const std::string source = m_options.from ? EncodingName(*m_options.from) : "";
        const std::string hint = reached ? "; --force converts it as " + source : "";
        return {Outcome::UNTOUCHED,
                {},
                m_common.quiet ? "" : Remark(m_input.path, what + ", left as it is" + hint)};
    }

    std::string Already() const { return m_identity.ascii ? "ASCII and so " + ToName() : ToName(); }

    std::string ToName() const { return EncodingName(m_options.to); }

    Report Other()
    {
        Target target(OutName());
        // What cannot be taken back must not be written before all is known to be well.
        if (target.IsDirect() && !m_options.lossy) {
            const Losses losses = Pass([](std::string_view, size_t) {});
            if (losses.count > 0) return Refused(losses);
        }
        if (WantsMark(m_options)) target.Write(ByteOrderMark(m_options.to));
        const Losses losses = Pass([&](std::string_view bytes, size_t consumed) {
            target.Write(bytes);
            if (m_head.size() < HEAD) m_head += bytes.substr(0, HEAD);
            m_progress(consumed);
        });
        if (losses.count > 0 && !m_options.lossy) return Refused(losses);
        Commit(target);
        Report report = Done(EncodingName(m_identity.code) + std::string(" -> ") + ToName());
        if (losses.count > 0) {
            report.outcome = Outcome::LOSSY;
            report.remark = Described(losses) +
                            Remark(m_input.path, "converted; " + Characters(losses.count) + " lost") +
                            report.remark;
        }
        return report;
    }

    size_t Shown() const { return m_common.verbose ? LOSSES_SHOWN_VERBOSE : LOSSES_SHOWN; }

    Losses Pass(const Sink& sink) const
    {
        return Convert(m_source.Bytes().substr(m_identity.mark), m_identity.code, m_options.to, Shown(),
                       sink);
    }

    Report Refused(const Losses& losses) const
    {
        return {Outcome::REFUSED,
                {},
                Described(losses) +
                    Remark(m_input.path, "not converted: " + Characters(losses.count) + " would be lost in " +
                                             ToName() + " (--lossy allows it)")};
    }

    std::string Described(const Losses& losses) const
    {
        std::string text;
        for (const Loss& loss : losses.described)
            text += "codetrans: " + Readable(m_input.path) + ":" + std::to_string(loss.line) + ":" +
                    std::to_string(loss.column) + ": " + loss.what + "\n";
        if (losses.count > losses.described.size())
            text += Remark(m_input.path, "... and " + std::to_string(losses.count - losses.described.size()) +
                                             " more" + (m_common.verbose ? "" : "; --verbose shows them"));
        return text;
    }

    std::string OutName() const
    {
        if (m_options.inPlace) return m_input.path;
        if (m_options.out.empty()) return "-";
        std::error_code error;
        if (!fs::is_directory(m_options.out, error)) return m_options.out;
        const fs::path name = fs::path(m_options.out) / m_input.relative;
        fs::create_directories(name.parent_path(), error);
        return name;
    }

    void Commit(Target& target) const
    {
        if (m_source.IsRegular() && m_input.path != "-") m_source.CheckUnchanged(m_input.path);
        target.Commit(&m_source.Status(), m_options.backupSuffix);
    }

    // A result that would not be recognised could be converted once more by a second run.
    Report Done(const std::string& what) const
    {
        Report report;
        if (m_common.verbose) report.remark = Remark(m_input.path, what);
        if (m_common.quiet || m_head.empty() || WantsMark(m_options)) return report;
        const Identity again = Identify(m_head);
        if (again.code != m_options.to && !again.ascii)
            report.remark +=
                Remark(m_input.path, "note: the result is too short or too odd to be recognised as " +
                                         ToName() + " again: name it with --from from now on");
        return report;
    }

    // Of the result, enough to recognise it.
    static constexpr size_t HEAD = 1 << 16;

    const CommonOptions& m_common;
    const ConvertOptions& m_options;
    const Input& m_input;
    const Workers::Progress& m_progress;
    Source m_source;
    Identity m_identity;
    std::string m_head;
};

bool IsFolder(const std::string& name)
{
    std::error_code error;
    return fs::is_directory(name, error);
}

// What is wrong with the command line, or empty.
std::string WrongUsage(const ConvertOptions& options, const Inputs& inputs)
{
    const bool many = inputs.files.size() > 1 || options.recursive;
    const auto isStandard = [](const Input& input) { return input.path == "-"; };
    if (options.inPlace && std::any_of(inputs.files.begin(), inputs.files.end(), isStandard))
        return "standard input cannot be converted in place";
    if (options.inPlace || !many) return {};
    if (options.out.empty() || !IsFolder(options.out))
        return "several files need --in-place, or -o with a folder that exists";
    std::set<std::string> names;
    for (const Input& input : inputs.files)
        if (!names.insert(input.relative).second)
            return "two files would become " + Readable((fs::path(options.out) / input.relative).string());
    return {};
}

void Summarise(const OutcomeCounts& counts)
{
    constexpr const char* NAMES[] = {"converted", "left as they were", "skipped", "converted with losses",
                                     "undecided", "refused",           "failed"};
    std::string text;
    for (size_t i = 0; i < std::size(NAMES); ++i)
        if (counts[i] > 0) text += (text.empty() ? "" : ", ") + std::to_string(counts[i]) + " " + NAMES[i];
    std::cerr << "codetrans: " << text << '\n';
}
}  // namespace

int Convert(const CommonOptions& common, const ConvertOptions& options)
{
    Inputs inputs = CollectInputs(options.files, {options.recursive, true, options.backupSuffix});
    if (options.inPlace) inputs.DropAliases();
    if (const std::string wrong = WrongUsage(options, inputs); !wrong.empty()) {
        std::cerr << "codetrans: " << wrong << '\n';
        return WRONG_USAGE;
    }
    if (!Begin(common)) return FAILED;
    const auto work = [&](const Input& input, const Workers::Progress& progress) {
        return Conversion(common, options, input, progress).Run();
    };
    OutcomeCounts counts = {};
    const int status = Session{common, inputs, options.jobs, true, work}.Run(counts);
    if (!common.quiet && inputs.files.size() > 1) Summarise(counts);
    return status;
}
