// detect: one line a file.
#include <unistd.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Encoding.h"
#include "Identity.h"
#include "Names.h"
#include "Session.h"
#include "Source.h"

namespace
{
using Json = nlohmann::ordered_json;

std::string JsonLine(const std::string& name, const Source& source, const Identity& identity)
{
    const bool known = identity.code != ENCODE_UNKNOWN;
    const Json line = {
        {"name", Readable(name)},    {"encoding", known ? Json(EncodingName(identity.code)) : Json()},
        {"ascii", identity.ascii},   {"byteOrderMark", identity.mark != 0},
        {"binary", identity.binary}, {"bytes", source.Bytes().size()}};
    return line.dump() + "\n";
}

// `width` is that of the longest name; 0 separates by a tab.
std::string TextLine(const std::string& name, const Identity& identity, size_t width)
{
    const std::string readable = Readable(name);
    const std::string answer = identity.binary ? "binary" : EncodingName(identity.code);
    if (width == 0) return readable + "\t" + answer + "\n";
    return readable + ":" + std::string(width + 1 - std::min(width, Width(readable)), ' ') + answer + "\n";
}

Report DetectOne(const Input& input, const DetectOptions& options, size_t width)
{
    const Source source(input.path);
    const Identity identity = Identify(source.Bytes());
    if (identity.binary && input.walked) return {Outcome::SKIPPED, {}, Remark(input.path, "binary, skipped")};
    Report report;
    report.outcome = identity.code != ENCODE_UNKNOWN ? Outcome::DONE : Outcome::UNDECIDED;
    report.result =
        options.json ? JsonLine(input.path, source, identity) : TextLine(input.path, identity, width);
    if (!identity.doubt.empty() && identity.mark == 0 && identity.code != ENCODE_UNKNOWN)
        report.remark = Remark(input.path, "note: " + identity.doubt);
    return report;
}
}  // namespace

int Detect(const CommonOptions& common, const DetectOptions& options)
{
    if (!Begin(common)) return FAILED;
    const Inputs inputs = CollectInputs(options.files, {options.recursive, false, {}});
    size_t width = 0;
    if (isatty(STDOUT_FILENO) == 1)
        for (const Input& input : inputs.files) width = std::max(width, Width(Readable(input.path)));
    const auto work = [&](const Input& input, const Workers::Progress&) {
        Report report = DetectOne(input, options, width);
        if (common.quiet) report.remark.clear();
        return report;
    };
    OutcomeCounts counts = {};
    return Session{common, inputs, options.jobs, false, work}.Run(counts);
}
