// detect: one line a file.
#include <Margin.h>
#include <unistd.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Identity.h"
#include "Names.h"
#include "Session.h"
#include "Source.h"
#include "UnicodeCodec.h"

namespace
{
using Json = nlohmann::ordered_json;

// A long source that begins with ASCII is looked at from where that ends. Text that could go on as something
// else is read to its end.
Identity IdentifySource(Source& source)
{
    std::string_view head = source.Fill(HEAD_BYTES);
    Identity first = Identify(head, source.IsAtEnd());
    if (!first.ascii) return first;
    while (!source.IsAtEnd() && AsciiLength(head) == head.size()) {
        constexpr size_t KEPT = 1 << 16;  // before the first byte beyond ASCII
        source.Use(head.size() - KEPT);
        head = source.Fill(HEAD_BYTES);
    }
    return AsciiLength(head) == head.size() ? first : Identify(head, source.IsAtEnd());
}

Json NameOrNull(const Encoding* encoding)
{
    return encoding != nullptr ? Json(encoding->name) : Json();
}

// Of standard input, so much as was read.
uint64_t SizeOf(const Source& source)
{
    return source.IsRegular() ? static_cast<uint64_t>(source.Status().st_size) : source.Size();
}

std::string JsonLine(const std::string& name, const Source& source, const Identity& identity)
{
    const Json line = {
        {"name", Readable(name)},    {"nameBytes", Base64(name)}, {"encoding", NameOrNull(identity.encoding)},
        {"margin", identity.margin}, {"ascii", identity.ascii},   {"byteOrderMark", identity.mark != 0},
        {"binary", identity.binary}, {"bytes", SizeOf(source)}};
    return line.dump() + "\n";
}

// `width` is that of the longest name; 0 separates by a tab.
std::string TextLine(const std::string& name, const Identity& identity, size_t width)
{
    const std::string readable = Readable(name);
    const std::string answer = identity.binary ? "binary" : NameOf(identity.encoding);
    if (width == 0) return readable + "\t" + answer + "\n";
    return readable + ":" + std::string(width + 1 - std::min(width, Width(readable)), ' ') + answer + "\n";
}

bool IsWanted(const Identity& identity, const std::vector<std::string>& only)
{
    return only.empty() || std::any_of(only.begin(), only.end(), [&](const std::string& name) {
               if (name == "unknown") return identity.encoding == nullptr && !identity.binary;
               if (name == "binary") return identity.binary;
               return identity.encoding != nullptr && FindEncoding(name).encoding == identity.encoding;
           });
}

Report DetectOne(const Input& input, const DetectOptions& options, size_t width)
{
    Source source(input.path);
    const Identity identity = IdentifySource(source);
    if (identity.binary && input.walked && options.only.empty())
        return {Outcome::SKIPPED, {}, Remark(input.path, "binary, skipped")};
    Report report;
    report.outcome = identity.encoding != nullptr ? Outcome::DONE : Outcome::UNDECIDED;
    if (!IsWanted(identity, options.only)) return {};
    if (options.printNames)
        report.result = input.path + '\0';
    else if (options.json)
        report.result = JsonLine(input.path, source, identity);
    else
        report.result = TextLine(input.path, identity, width);
    if (identity.encoding == nullptr) return report;
    if (!identity.doubt.empty())
        report.remark = Remark(input.path, "note: " + identity.doubt);
    else if (identity.margin < ENOUGH_MARGIN && !identity.ascii)
        report.remark = Remark(input.path, "note: " + identity.encoding->name + " with a margin of only " +
                                               std::to_string(identity.margin));
    return report;
}
}  // namespace

int Detect(const CommonOptions& common, const DetectOptions& options)
{
    if (!Begin(common)) return FAILED;
    const Inputs inputs = CollectInputs(options.input, {});
    size_t width = 0;
    if (isatty(STDOUT_FILENO) == 1)
        for (const Input& input : inputs.files) width = std::max(width, Width(Readable(input.path)));
    const auto work = [&](size_t task, const Workers::Progress&, const Workers::Send& send) {
        Report report = DetectOne(inputs.files[task], options, width);
        if (common.quiet) report.remark.clear();
        send(task, report);
    };
    OutcomeCounts counts = {};
    return Session{common, inputs, options.input.jobs, false, work}.Run(counts);
}
