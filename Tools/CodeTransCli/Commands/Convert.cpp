// convert: files into another encoding, whole or not at all.
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <map>
#include <new>
#include <set>
#include <thread>

#include "Commands.h"
#include "ConvertFile.h"
#include "Names.h"
#include "Session.h"
#include "Source.h"

namespace fs = std::filesystem;

namespace
{
// Targets that are flushed together and then put in their places. Whatever ends the process leaves each file
// old or new: none has its name before all are on the disk.
class Batch
{
public:
    Batch(const Inputs& inputs, const ConvertOptions& options) : m_inputs(inputs), m_options(options) {}

    // Sends what was waiting, if it is enough.
    void Add(size_t task, ConvertedFile file, const Workers::Send& send)
    {
        m_waiting.push_back({task, std::move(file)});
        // File descriptors are held open, of which a process mostly has 1,024.
        constexpr size_t MOST = 256;
        if (m_waiting.size() >= MOST) Finish(send);
    }

    void Finish(const Workers::Send& send)
    {
        for (Waiting& one : m_waiting) Try(one, [&] { one.file.target->Keep(m_options.backupSuffix); });
        Flush();
        for (Waiting& one : m_waiting) Try(one, [&] { one.file.target->Place(); });
        Flush();
        for (const Waiting& one : m_waiting) send(one.task, one.file.report);
        m_waiting.clear();
    }

private:
    struct Waiting {
        size_t task;
        ConvertedFile file;
    };

    template <typename Step>
    void Try(Waiting& one, Step step)
    {
        if (one.file.target == nullptr) return;
        try {
            step();
        } catch (const std::exception& error) {
            one.file.target.reset();
            one.file.report = FailureReport(m_options, m_inputs.files[one.task], error.what());
        }
    }

    // All of each file system on which a file is replaced. What cannot be flushed fails.
    void Flush()
    {
        std::map<dev_t, bool> flushed;
        for (Waiting& one : m_waiting)
            Try(one, [&] {
                const Target& target = *one.file.target;
                if (!target.Replaces()) return;
                const auto [place, isNew] = flushed.try_emplace(target.Device(), false);
                if (isNew) place->second = syncfs(target.Descriptor()) == 0;
                if (!place->second) Fail("cannot flush " + target.Folder());
            });
    }

    const Inputs& m_inputs;
    const ConvertOptions& m_options;
    std::vector<Waiting> m_waiting;
};

bool IsFolder(const std::string& name)
{
    std::error_code error;
    return fs::is_directory(name, error);
}

// What is wrong with the command line, or empty.
std::string WrongUsage(const ConvertOptions& options, const Inputs& inputs)
{
    const bool many = inputs.files.size() > 1 || options.input.recursive;
    const auto isStandard = [](const Input& input) { return input.path == "-"; };
    if (options.inPlace && std::any_of(inputs.files.begin(), inputs.files.end(), isStandard))
        return "standard input cannot be converted in place";
    if (options.json && !options.inPlace && !options.dryRun && (options.out.empty() || options.out == "-"))
        return "--json prints its report on standard output; give --in-place or -o for the text";
    if (options.inPlace || options.dryRun || !many) return {};
    if (options.out.empty() || !IsFolder(options.out))
        return "several files need --in-place, or -o with an existing folder";
    std::set<std::string> names;
    for (const Input& input : inputs.files)
        if (!names.insert(input.relative).second)
            return "two files would be written to " +
                   Readable((fs::path(options.out) / input.relative).string());
    return {};
}

void Summarise(const OutcomeCounts& counts, bool dryRun)
{
    constexpr const char* NAMES[] = {"converted", "unchanged", "skipped", "converted with losses",
                                     "undecided", "refused",   "failed"};
    std::string text;
    for (size_t i = 0; i < std::size(NAMES); ++i)
        if (counts[i] > 0) text += (text.empty() ? "" : ", ") + std::to_string(counts[i]) + " " + NAMES[i];
    if (text.empty()) text = "no files";
    std::cerr << "codetrans: " << (dryRun ? "dry run, nothing was written; it would be: " : "") << text
              << '\n';
}
}  // namespace

int Convert(const CommonOptions& common, const ConvertOptions& options)
{
    Inputs inputs = CollectInputs(options.input, {true, options.backupSuffix});
    if (options.inPlace) inputs.DropAliases();
    if (const std::string wrong = WrongUsage(options, inputs); !wrong.empty()) {
        std::cerr << "codetrans: " << wrong << '\n';
        return WRONG_USAGE;
    }
    if (!Begin(common)) return FAILED;
    Batch batch(inputs, options);
    Session session{common, inputs, options.input.jobs, true, {}};
    // Several files are shared between processes, a single one between threads.
    const bool single = inputs.files.size() == 1;
    const unsigned processors = std::max(1U, std::thread::hardware_concurrency());
    const auto threads =
        single ? static_cast<unsigned>(options.input.jobs != 0 ? options.input.jobs : processors) : 1;
    session.work = [&](size_t task, const Workers::Progress& progress, const Workers::Send& send) {
        const Input& input = inputs.files[task];
        ConvertedFile file;
        try {
            file = ConvertFile(common, options, input, progress, threads);
            if (single && file.target != nullptr) file.target->Commit(options.backupSuffix);
            if (single) file.target.reset();
        } catch (const std::bad_alloc&) {
            file = {FailureReport(options, input, "out of memory"), nullptr};
        } catch (const std::exception& error) {
            file = {FailureReport(options, input, error.what()), nullptr};
        }
        batch.Add(task, std::move(file), send);
    };
    session.finish = [&](const Workers::Send& send) { batch.Finish(send); };
    OutcomeCounts counts = {};
    const int status = session.Run(counts);
    if (!common.quiet && (inputs.files.size() > 1 || options.dryRun)) Summarise(counts, options.dryRun);
    return status;
}
