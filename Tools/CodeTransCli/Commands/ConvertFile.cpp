// The text goes through in pieces of a fixed size, so that a file of any size takes the same memory. A result
// that goes to a file is written as it comes, and thrown away where a later byte speaks against it. Of one
// that cannot be taken back, what is proven goes out, and what speaks against it ends it.
#include "ConvertFile.h"

#include <Margin.h>

#include <algorithm>
#include <deque>
#include <filesystem>
#include <future>
#include <nlohmann/json.hpp>
#include <optional>

#include "Conversion.h"
#include "Decision.h"
#include "Lines.h"
#include "Names.h"
#include "Output.h"
#include "Source.h"
#include "StrayLines.h"
#include "TextChanges.h"
#include "UnicodeCodec.h"

namespace fs = std::filesystem;

namespace
{
constexpr size_t LOSSES_SHOWN = 10, LOSSES_SHOWN_VERBOSE = 10'000;
constexpr size_t CHUNK = 1 << 20;  // bytes of the source that are looked at for stray lines
constexpr size_t PIECE = 1 << 15;  // bytes that are converted together: in all their forms they fit the cache

// Without a word from the user, UTF-16 and UTF-32 get a mark, so that they are known for what they are.
bool WantsMark(const ConvertOptions& options)
{
    const bool wide = options.to->scheme == Scheme::UTF16 || options.to->scheme == Scheme::UTF32;
    return options.mark.value_or(wide);
}

std::string Characters(uint64_t count)
{
    return std::to_string(count) + (count == 1 ? " character" : " characters");
}

// What is reported of a file.
struct Record {
    const Encoding* source;
    uint64_t bytes, written, lost;
    Outcome outcome;
    std::string reason;
};

std::string JsonLine(const ConvertOptions& options, const Input& input, const Record& record)
{
    using Json = nlohmann::ordered_json;
    constexpr const char* OUTCOMES[] = {"converted", "unchanged", "skipped", "converted with losses",
                                        "undecided", "refused",   "failed"};
    const Json line = {{"name", Readable(input.path)},
                       {"nameBytes", Base64(input.path)},
                       {"source", record.source != nullptr ? Json(record.source->name) : Json()},
                       {"target", options.to->name},
                       {"bytes", record.bytes},
                       {"bytesWritten", record.written},
                       {"charactersLost", record.lost},
                       {"outcome", OUTCOMES[static_cast<size_t>(record.outcome)]},
                       {"reason", record.reason}};
    return line.dump() + "\n";
}

class FileConverter
{
public:
    FileConverter(const CommonOptions& common, const ConvertOptions& options, const Input& input,
                  const Workers::Progress& progress, unsigned threads)
        : m_common(common),
          m_options(options),
          m_input(input),
          m_progress(progress),
          m_threads(threads),
          m_source(input.path)
    {
    }

    ConvertedFile Run()
    {
        m_source.Fill(HEAD_BYTES);
        Report report;
        if (m_options.byLines)
            report = ByLines();
        else
            report = ByDecision();
        if (m_options.json) report.result = Json(report);
        const bool kept = report.outcome == Outcome::DONE || report.outcome == Outcome::LOSSY ||
                          report.outcome == Outcome::UNTOUCHED;
        return {std::move(report), kept ? std::move(m_target) : nullptr};
    }

private:
    Report ByDecision()
    {
        TakeDecision();
        const bool passedOver = m_identity.binary && m_input.walked && !m_options.force;
        if (passedOver || !m_identity.doubt.empty()) return Passed();
        return m_same && !Changes() ? Same() : Other();
    }

    // --------------------------------------------------------------------------------------------------
    // The decision

    // A long source that begins with ASCII: what matters comes later.
    bool IsAsciiSoFar(const Source& source) const
    {
        const std::string_view head = source.Window();
        const bool possible = m_options.from == nullptr || m_options.from->holdsAscii;
        return possible && !source.IsAtEnd() && AsciiLength(head) == head.size() &&
               head.find('\0') == std::string_view::npos;
    }

    void TakeDecision()
    {
        if (!IsAsciiSoFar(m_source)) return TakeDecisionOn(m_source);
        if (m_source.IsRegular() && m_input.path != "-") {
            Source ahead(m_input.path);
            ahead.Fill(HEAD_BYTES);
            while (IsAsciiSoFar(ahead)) {
                ahead.Use(ahead.Window().size() - PIECE);
                ahead.Fill(HEAD_BYTES);
            }
            return TakeDecisionOn(ahead);
        }
        m_undecided = true;
        m_identity.encoding = &ASCII;
        m_identity.ascii = true;
    }

    void TakeDecisionOn(const Source& source)
    {
        const Decision decision = Decide(source.Window(), source.IsAtEnd(), m_options);
        m_undecided = false;
        m_identity = decision.identity;
        m_same = decision.same;
        m_reached = decision.reached;
    }

    // --------------------------------------------------------------------------------------------------
    // What becomes of the file

    Report Passed()
    {
        m_progress(m_source.Size());
        if (m_identity.binary && m_input.walked) return Left(Outcome::SKIPPED, "binary, skipped");
        return Refused("not converted: " + m_identity.doubt);
    }

    // Whether the result differs although the encoding does not.
    bool Changes() const
    {
        const bool marked = m_identity.mark != 0;
        const bool empty = m_source.Size() == 0;
        return marked != (empty ? marked : m_options.mark.value_or(marked)) ||
               m_options.lineEnd != LineEnd::KEPT;
    }

    // Already as wanted, if all of it can be read; written only where it goes elsewhere.
    Report Same()
    {
        m_copies = !m_options.inPlace;
        if (m_copies) OpenTarget();
        m_ownMark = m_copies && m_identity.mark != 0;
        if (const auto fault = Transcode(nullptr)) return *fault;
        Finish();
        const std::string what =
            m_source.Size() == 0 ? "is empty"
                                 : "is already " + m_options.to->name +
                                       (m_identity.ascii && m_options.to != &ASCII ? " (only ASCII)" : "");
        const std::string hint = m_reached ? "; --force converts it as " + m_options.from->name : "";
        return Left(Outcome::UNTOUCHED, what + ", unchanged" + hint);
    }

    Report Other()
    {
        OpenTarget();
        m_ownMark = m_same ? m_options.mark.value_or(m_identity.mark != 0) : WantsMark(m_options);
        m_copies = m_same && m_options.lineEnd == LineEnd::KEPT;
        if (const auto fault = Transcode(m_copies ? nullptr : m_options.to)) return *fault;
        if (const std::string other = TakenFor();
            !other.empty() && m_options.inPlace && m_options.from == nullptr)
            return Refused("not converted: the result would be taken for " + other +
                           ", and a second run would convert it again; --from " + m_identity.encoding->name +
                           " converts it");
        Finish();
        return Converted(m_identity.encoding->name);
    }

    Report ByLines()
    {
        const Encoding* const marked = MarkedEncoding(m_source.Window());
        if (marked != nullptr && marked != &UTF8)
            return Refused("not converted: --lines cannot read " + marked->name +
                           ", whose byte-order mark the file has");
        m_identity.encoding = &UTF8;
        m_identity.mark = marked != nullptr ? marked->mark.size() : 0;
        m_lines.emplace(m_source.Window(), m_options.sure);
        OpenTarget();
        m_ownMark = WantsMark(m_options);
        if (const auto fault = Transcode(m_options.to)) return *fault;
        if (m_options.inPlace && m_lines->AreAllIn(*m_options.to) && !Changes()) {
            return Left(Outcome::UNTOUCHED, "is already " + m_options.to->name + ", unchanged");
        }
        Finish();
        Report report = Converted("lines");
        report.remark += m_common.quiet ? "" : Remark(m_input.path, "lines: " + m_lines->Counts());
        return report;
    }

    // --------------------------------------------------------------------------------------------------
    // The text

    // From m_identity to `to`. Without it, the text is only read, and copied if m_copies says so. Returns a
    // report if that cannot be done.
    std::optional<Report> Transcode(const Encoding* to)
    {
        if (m_ownMark) m_output.Buffer() += m_options.to->mark;
        m_source.Use(m_identity.mark);
        Start(*m_identity.encoding, to);
        StrayLines stray(Shown());
        const bool looksForLines = !m_options.force && !m_lines;
        for (bool more = true; more;) {
            const std::string_view window = m_source.Fill(m_undecided ? HEAD_BYTES : CHUNK);
            if (m_undecided && !IsAsciiSoFar(m_source)) {
                TakeDecisionOn(m_source);
                if (!m_identity.doubt.empty()) return Passed();
                Start(*m_identity.encoding, to);
            }
            more = !m_source.IsAtEnd() || window.size() > CHUNK;
            const std::string_view chunk = Chunk(window, !more);
            if (looksForLines && (m_identity.encoding == &GBK || m_identity.encoding == &BIG5))
                stray.Pass(chunk);
            if (stray.Found().count > 0) m_output.Stop(0);
            const size_t used = PassChunk(chunk, !more);
            m_source.Use(used);
            m_progress(used);
            if (m_output.IsStopped() && m_output.IsPartial()) break;
        }
        while (!m_jobs.empty()) TakeJob();
        if (stray.Found().count > 0) return Mixed(stray.Found());
        const Losses& losses = m_conversion->Lost();
        if (losses.count > 0 && (!m_options.lossy || m_same)) return m_same ? Mixed(losses) : Lost(losses);
        m_output.PassLast();
        return std::nullopt;
    }

    void Start(const Encoding& from, const Encoding* to)
    {
        const size_t describe = Shown();
        auto next = std::make_unique<Conversion>(from, to, describe);
        if (m_conversion != nullptr) next->GoOnFrom(*m_conversion);
        m_conversion = std::move(next);
        m_to = to;
        m_looked = m_looked || to == nullptr;
        if (to == nullptr) return;
        const bool declares = !m_same && !m_lines && !m_looked;
        if (!declares) m_looked = true;
        if (!declares && m_options.lineEnd == LineEnd::KEPT) return;
        m_conversion->ChangeBy([this](std::u16string& units, bool isLast) {
            if (!m_looked && !m_same && !m_lines)
                m_declarations = CheckDeclarations(units, *m_options.to, m_options.fixDeclarations);
            m_looked = true;
            const bool hasEnds = m_options.lineEnd != LineEnd::KEPT;
            if (hasEnds) m_lineEnds.Change(units, isLast);
            return hasEnds || (m_options.fixDeclarations && !m_declarations.empty());
        });
    }

    // Ends with a line, if there is one, so that lines are looked at whole.
    std::string_view Chunk(std::string_view window, bool isLast) const
    {
        if (isLast) return window;
        if (m_undecided) return window.substr(0, window.size() - PIECE);
        const size_t end = window.substr(0, CHUNK).rfind('\n');
        return window.substr(0, end == std::string_view::npos ? CHUNK : end + 1);
    }

    size_t PassChunk(std::string_view chunk, bool isLast)
    {
        if (m_lines) return PassLines(chunk);
        if (!isLast && CanShare()) return StartJob(chunk);
        while (!m_jobs.empty()) TakeJob();
        const size_t used = PassPieces(chunk, isLast);
        return used > 0 || isLast ? used : PassPieces(chunk, true);
    }

    // The first chunk may have declarations. Encodings with states can only be read from the start.
    bool CanShare() const
    {
        const auto isFree = [](const Encoding* encoding) {
            return encoding->scheme != Scheme::ICONV && encoding->scheme != Scheme::HZ;
        };
        return m_threads > 1 && m_looked && m_options.lineEnd == LineEnd::KEPT && !m_undecided &&
               isFree(m_identity.encoding) && isFree(m_options.to);
    }

    // A chunk that another thread converts.
    struct Job {
        std::string out;
        std::unique_ptr<Conversion> conversion;
    };

    size_t StartJob(std::string_view chunk)
    {
        const bool endsLine = chunk.back() == '\n' && m_identity.encoding->holdsAscii;
        const size_t whole = endsLine ? chunk.size() : MakeDecoder(*m_identity.encoding)->WholeLength(chunk);
        const auto convert = [text = std::string(chunk.substr(0, whole)), from = m_identity.encoding,
                              to = m_to, copies = m_copies, describe = Shown()] {
            Job job;
            job.conversion = std::make_unique<Conversion>(*from, to, describe);
            job.out.reserve(2 * text.size());
            for (size_t used = 0; used < text.size();) {
                const std::string_view piece = std::string_view(text).substr(used, PIECE);
                const bool ends = used + piece.size() == text.size();
                const size_t step = job.conversion->Pass(piece, ends, job.out);
                if (copies) job.out += piece.substr(0, step);
                used += step;
            }
            return job;
        };
        m_jobs.push_back(std::async(std::launch::async, convert));
        if (m_jobs.size() > m_threads) TakeJob();
        return whole;
    }

    // In their order.
    void TakeJob()
    {
        const Job job = m_jobs.front().get();
        m_jobs.pop_front();
        m_conversion->Join(*job.conversion, m_output.Buffer());
        m_output.Buffer() += job.out;
        Emit();
    }

    // Writes what has come, up to the first loss if there must be none.
    void Emit()
    {
        if (m_conversion->Lost().count > 0 && !m_options.lossy && !m_output.IsStopped())
            m_output.Stop(m_conversion->OutBeforeLoss());
        m_output.Pass();
    }

    size_t PassPieces(std::string_view chunk, bool isLast)
    {
        size_t used = 0;
        while (used < chunk.size()) {
            const std::string_view piece = chunk.substr(used, PIECE);
            const bool ends = used + piece.size() == chunk.size();
            std::string& out = m_output.Buffer();
            size_t step = m_conversion->Pass(piece, isLast && ends, out);
            if (step == 0 && ends) break;
            // A character that is longer than a piece: sequences of states may be.
            if (step == 0) step = m_conversion->Pass(chunk.substr(used), isLast, out);
            if (step == 0) break;
            if (m_copies) out += chunk.substr(used, step);
            used += step;
            Emit();
            if (m_output.IsStopped() && m_output.IsPartial()) break;
        }
        return used;
    }

    // Lines that follow each other in one encoding go together, and ASCII goes with any of them.
    size_t PassLines(std::string_view chunk)
    {
        const Encoding* current = nullptr;
        size_t begin = 0;
        for (size_t at = 0; at < chunk.size();) {
            const size_t lineEnd = chunk.find('\n', at);
            const std::string_view line =
                chunk.substr(at, lineEnd == std::string_view::npos ? lineEnd : lineEnd + 1 - at);
            const Encoding* const encoding = m_lines->EncodingOfLine(line);
            if (current != nullptr && encoding != current && encoding != &ASCII && current != &ASCII) {
                PassRun(chunk.substr(begin, at - begin), *current);
                begin = at;
            }
            if (current == nullptr || encoding != &ASCII) current = encoding;
            at += line.size();
        }
        if (current != nullptr) PassRun(chunk.substr(begin), *current);
        return chunk.size();
    }

    void PassRun(std::string_view lines, const Encoding& encoding)
    {
        Start(encoding, m_options.to);
        PassPieces(lines, true);
    }

    // --------------------------------------------------------------------------------------------------
    // The result

    void OpenTarget()
    {
        if (!m_options.dryRun) m_output.Open(OutName());
    }

    void Finish()
    {
        m_target = m_output.TakeTarget();
        if (m_target == nullptr) return;
        if (m_source.IsRegular() && m_input.path != "-") m_source.CheckUnchanged(m_input.path);
        m_target->Prepare(&m_source.Status());
        if (m_target->IsDirect()) m_target.reset();
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

    // --------------------------------------------------------------------------------------------------
    // What is said

    size_t Shown() const { return m_common.verbose ? LOSSES_SHOWN_VERBOSE : LOSSES_SHOWN; }

    Report Left(Outcome outcome, const std::string& why)
    {
        m_reason = why;
        return {outcome, {}, m_common.quiet ? "" : Remark(m_input.path, why)};
    }

    Report Refused(const std::string& why)
    {
        m_reason = why;
        const Outcome outcome = m_identity.doubt.empty() ? Outcome::REFUSED : Outcome::UNDECIDED;
        return {outcome, {}, Remark(m_input.path, why)};
    }

    Report Mixed(const Losses& stray)
    {
        const std::string name = m_identity.encoding->name;
        const bool readable = m_identity.encoding != m_options.to;  // though not as it was meant
        Report report =
            Refused("not converted: not all of it is " + name + "; it is damaged or mixes encodings" +
                    Ended() + (readable ? "; --from " + name + " --force converts it" : "") +
                    "; --lines detects each line separately");
        report.remark = Described(stray) + report.remark;
        return report;
    }

    Report Lost(const Losses& losses)
    {
        m_lost = losses.count;
        const bool partial = m_output.IsPartial();
        Report report =
            Refused(partial ? "stopped here; the output is incomplete"
                            : "not converted: " + Characters(losses.count) + " would be lost in " +
                                  m_options.to->name + " (--lossy converts it anyway)");
        report.remark = Described(losses) + report.remark;
        return report;
    }

    std::string Ended() const { return m_output.IsPartial() ? "; the output stops before this place" : ""; }

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

    Report Converted(const std::string& from)
    {
        Report report;
        const std::string how = from + " -> " + m_options.to->name;
        if (m_options.dryRun)
            report.remark = m_common.quiet ? "" : Remark(m_input.path, "would be converted: " + how);
        else if (m_common.verbose)
            report.remark = Remark(m_input.path, how);
        if (!m_common.quiet) report.remark += Declared() + RecognitionNote();
        const Losses& losses = m_conversion->Lost();
        m_lost = losses.count;
        if (losses.count == 0) return report;
        report.outcome = Outcome::LOSSY;
        m_reason = Characters(losses.count) + " lost";
        report.remark = Described(losses) + Remark(m_input.path, "converted; " + m_reason) + report.remark;
        return report;
    }

    std::string Declared() const
    {
        std::string text;
        for (const Declaration& declaration : m_declarations)
            text += Remark(m_input.path, m_options.fixDeclarations
                                             ? declaration.kind + " was changed from " + declaration.name +
                                                   " to the new encoding"
                                             : "warning: " + declaration.kind + " still says " +
                                                   declaration.name + "; --fix-declarations changes it");
        return text;
    }

    // The encoding that a later run would clearly take the result for, if it is not the one that it is in.
    std::string TakenFor() const
    {
        if (m_same || m_ownMark || m_output.Head().empty()) return {};
        const Identity again = Identify(m_output.Head(), m_output.Written() == m_output.Head().size());
        const bool right = again.encoding == m_options.to || again.ascii ||
                           (m_options.to == &GB18030 && again.encoding == &GBK);
        return right || again.encoding == nullptr || again.margin < m_options.sure ? ""
                                                                                   : again.encoding->name;
    }

    // A result that would not be recognised could be converted once more by a second run.
    std::string RecognitionNote() const
    {
        if (m_output.Head().empty() || m_ownMark) return {};
        const Identity again = Identify(m_output.Head(), m_output.Written() == m_output.Head().size());
        if (again.ascii || (again.encoding == m_options.to && again.margin >= m_options.sure)) return {};
        if (m_options.to == &GB18030 && again.encoding == &GBK && again.margin >= m_options.sure) return {};
        return Remark(m_input.path, "note: the result would not be detected as " + m_options.to->name +
                                        "; give its encoding with --from in further conversions");
    }

    std::string Json(const Report& report) const
    {
        const bool kept = report.outcome == Outcome::DONE || report.outcome == Outcome::LOSSY;
        const Encoding* const source = m_lines ? nullptr : m_identity.encoding;
        return JsonLine(m_options, m_input,
                        {source, m_source.Size(), kept || m_output.IsPartial() ? m_output.Written() : 0,
                         m_lost, report.outcome, m_reason});
    }

    const CommonOptions& m_common;
    const ConvertOptions& m_options;
    const Input& m_input;
    const Workers::Progress& m_progress;
    unsigned m_threads;
    Source m_source;
    std::unique_ptr<Target> m_target;

    Identity m_identity;
    bool m_same = false, m_reached = false;
    bool m_undecided = false;  // all was ASCII so far, and more is to come
    std::optional<LineReader> m_lines;

    std::unique_ptr<Conversion> m_conversion;
    const Encoding* m_to = nullptr;  // null: the text is only read
    std::deque<std::future<Job>> m_jobs;
    LineEnds m_lineEnds{m_options.lineEnd};
    std::vector<Declaration> m_declarations;
    bool m_looked = false;   // for declarations
    bool m_copies = false;   // the bytes are wanted as they are
    bool m_ownMark = false;  // the result begins with a byte-order mark
    Output m_output{HEAD_BYTES};
    uint64_t m_lost = 0;
    std::string m_reason;
};
}  // namespace

ConvertedFile ConvertFile(const CommonOptions& common, const ConvertOptions& options, const Input& input,
                          const Workers::Progress& progress, unsigned threads)
{
    return FileConverter(common, options, input, progress, threads).Run();
}

Report FailureReport(const ConvertOptions& options, const Input& input, const std::string& why)
{
    const std::string result =
        options.json ? JsonLine(options, input, {nullptr, 0, 0, 0, Outcome::FAILED, why}) : "";
    return {Outcome::FAILED, result, Remark(input.path, why)};
}
