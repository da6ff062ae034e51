// The command line alone; the commands are in files of their own.
#include "CommandLine.h"

#include <Margin.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <iostream>
#include <memory>
#include <new>

#include "Commands.h"
#include "Encoding.h"
#include "NamesLine.h"
#include "Report.h"

namespace
{
constexpr size_t MOST_JOBS = 256;

constexpr const char* STATUSES =
    "Exit status: 0 all done, 1 a file was undecided or refused, 2 wrong usage, 3 reading or writing "
    "failed,\n"
    "4 converted with losses (--lossy).";

constexpr const char* EXAMPLES =
    "Examples:\n"
    "  codetrans detect *.txt                          print the encoding of each file\n"
    "  codetrans convert --to utf-8 old.txt            print the text in UTF-8\n"
    "  codetrans convert --to utf-8 -o new.txt old.txt\n"
    "  codetrans convert --to utf-8 --in-place --backup .orig --recursive --jobs 4 folder\n"
    "  codetrans names folder                          show which file names would be converted\n"
    "  codetrans doctor                                check the installation\n\n";

constexpr const char* DETECT_EXAMPLES =
    "Examples:\n"
    "  codetrans detect readme.txt\n"
    "  codetrans detect --recursive --only big5 --print0 folder | xargs -0 ls -l\n\n";

constexpr const char* RESTORE_EXAMPLES =
    "Examples:\n"
    "  codetrans restore old.txt                       undo convert --in-place --backup\n"
    "  codetrans restore --recursive --dry-run folder\n\n"
    "Exit status: 0 all done, 1 a file was refused, 2 wrong usage, 3 reading or renaming failed.";

constexpr const char* DOCTOR_STATUSES = "Exit status: 0 nothing is missing, 1 something is missing.";

constexpr const char* CONVERT_EXAMPLES =
    "Examples:\n"
    "  codetrans convert --to gbk --from big5 -o new.txt old.txt\n"
    "  codetrans convert --to utf-8 --in-place --backup .orig --recursive --jobs 4 folder\n"
    "  unzip -p old.zip readme.txt | codetrans convert --to utf-8 -\n\n";

// Thrown on a command line that the parser accepts but that makes no sense.
struct UsageError {
    std::string text;
};

NamedEncoding EncodingFor(const std::string& name)
{
    const NamedEncoding found = FindEncoding(name);
    if (found.encoding != nullptr) return found;
    throw UsageError{"'" + name +
                     "' is not a known encoding; 'codetrans convert --list' prints the known ones"};
}

struct CommandLine {
    CommonOptions common;
    DetectOptions detect;
    ConvertOptions convert;
    RestoreOptions restore;
    NamesOptions names;
    std::string to, from, lineEnd;
    bool mark = false, noMark = false, list = false;

    // What the parser cannot see.
    void Settle()
    {
        if (to.empty()) throw UsageError{"--to is required: the encoding to write, such as utf-8"};
        const NamedEncoding target = EncodingFor(to);
        convert.to = target.encoding;
        if (convert.to == &HZ || convert.to == &UTF7)
            throw UsageError{convert.to->name + " can be read, but not written"};
        if (!from.empty()) {
            const NamedEncoding source = EncodingFor(from);
            convert.from = source.encoding;
            convert.fromEitherOrder = source.marked;
        }
        if (mark && convert.to->mark.empty()) throw UsageError{convert.to->name + " has no byte-order mark"};
        if (convert.force && from.empty()) throw UsageError{"--force needs --from, the encoding to read"};
        if (convert.byLines && (!from.empty() || convert.force))
            throw UsageError{"--lines detects the encoding of each line; --from and --force exclude it"};
        if (mark || noMark || target.marked) convert.mark = !noMark;
        if (convert.inPlace && !convert.out.empty()) throw UsageError{"--in-place and -o exclude each other"};
        if (!convert.backupSuffix.empty() && !convert.inPlace) throw UsageError{"--backup needs --in-place"};
        CheckSuffix(convert.backupSuffix);
        if (lineEnd == "lf") convert.lineEnd = LineEnd::LF;
        if (lineEnd == "crlf") convert.lineEnd = LineEnd::CRLF;
    }

    static void CheckSuffix(const std::string& suffix)
    {
        if (suffix.find('/') != std::string::npos)
            throw UsageError{"the suffix of a backup cannot contain '/'"};
    }

    static void CheckOnly(const std::vector<std::string>& names)
    {
        for (const std::string& name : names)
            if (name != "unknown" && name != "binary") EncodingFor(name);
    }

    static void CheckInput(const FileOptions& input)
    {
        if (input.files.empty() && input.listFile.empty())
            throw UsageError{"no file given; - is standard input"};
        if (input.zeroSeparated && input.listFile.empty())
            throw UsageError{"-0 needs --files-from, the list that it applies to"};
    }
};

void AddCommon(CLI::App& app, CommonOptions& options)
{
    app.add_option("--directory", options.directory,
                   "Folder that contains Data/CodeTrans.model (default: the installed one)")
        ->envname("CODETRANS_DIRECTORY")
        ->type_name("DIR");
    CLI::Option* const quiet =
        app.add_flag("--quiet,-q", options.quiet, "Report only failures, refusals and losses");
    app.add_flag("--verbose,-v", options.verbose, "Report every file, and more than ten losses for each")
        ->excludes(quiet);
}

void AddFiles(CLI::App& command, FileOptions& options)
{
    command.add_option("FILE", options.files, "Files, folders (with --recursive), or - for standard input")
        ->type_name("");
    command.add_flag("--recursive,-r", options.recursive,
                     "Include the files in folders; binary files in them are skipped");
}

void AddWalk(CLI::App& command, FileOptions& options)
{
    AddFiles(command, options);
    command
        .add_option("--include", options.include, "In folders, take only files whose names match the pattern")
        ->type_name("PATTERN")
        ->allow_extra_args(false);
    command.add_option("--exclude", options.exclude, "In folders, skip files whose names match the pattern")
        ->type_name("PATTERN")
        ->allow_extra_args(false);
    command
        .add_option("--files-from", options.listFile, "Read more file names from a file; - is standard input")
        ->type_name("FILE");
    command.add_flag("-0,--null", options.zeroSeparated,
                     "Names in --files-from end with a zero byte instead of a newline");
    command.add_option("--jobs,-j", options.jobs, "Number of processes (default: the number of processors)")
        ->check(CLI::Range(static_cast<size_t>(1), MOST_JOBS))
        ->type_name("N");
}

void AddDetect(CLI::App& command, DetectOptions& options)
{
    AddWalk(command, options.input);
    CLI::Option* const json = command.add_flag("--json", options.json, "Print one JSON object per file");
    command.add_option("--only", options.only, "Print only files in this encoding; also: unknown, binary")
        ->type_name("ENC")
        ->allow_extra_args(false);
    command.add_flag("--print0", options.printNames, "Print only the names, each followed by a zero byte")
        ->excludes(json);
    command.footer(std::string(DETECT_EXAMPLES) + STATUSES);
}

void AddWriting(CLI::App& command, CommandLine& line)
{
    ConvertOptions& options = line.convert;
    command
        .add_option("--output,-o", options.out, "File to write, or folder for several; - is standard output")
        ->type_name("OUT");
    command.add_flag("--in-place,-i", options.inPlace, "Replace each file with the converted text");
    command
        .add_option("--backup", options.backupSuffix,
                    "Keep each old file under its name plus this suffix; see 'restore'")
        ->type_name("SUFFIX");
    command.add_flag("--dry-run,-n", options.dryRun, "Write nothing; report what would be done");
    command.add_flag("--json", options.json, "Print a report: one JSON object per file");
    CLI::Option* const mark =
        command.add_flag("--bom", line.mark, "Write a byte-order mark (default for UTF-16 and UTF-32)");
    command.add_flag("--no-bom", line.noMark, "Write no byte-order mark (default for UTF-8)")->excludes(mark);
    command.add_option("--eol", line.lineEnd, "Change all line ends to this kind: lf or crlf")
        ->check(CLI::IsMember({"lf", "crlf"}))
        ->type_name("KIND");
    command.add_flag("--fix-declarations", options.fixDeclarations,
                     "Change the encoding's name where the text declares it, as in HTML and XML");
}

void AddConvert(CLI::App& command, CommandLine& line)
{
    ConvertOptions& options = line.convert;
    AddWalk(command, options.input);
    command.add_option("--to,-t", line.to, "Encoding to write, such as utf-8 or gbk")->type_name("ENC");
    command.add_option("--from,-f", line.from, "Encoding to read; detected when not given")->type_name("ENC");
    command.add_flag("--list", line.list, "Print the encodings and their names, and do nothing else");
    command.add_flag("--lines", options.byLines,
                     "Detect the encoding of each line separately, as for mixed logs");
    command
        .add_option("--sure", options.sure,
                    "How clear an answer must be: the least margin, 0 to 100 (default " +
                        std::to_string(ENOUGH_MARGIN) + ")")
        ->check(CLI::Range(0, MOST_MARGIN))
        ->type_name("N");
    AddWriting(command, line);
    command.add_flag("--lossy", options.lossy, "Convert even if characters are lost, and report them");
    command.add_flag("--force", options.force,
                     "Convert as --from says, even if a file seems to be converted already or UTF-8");
    command.footer(std::string(CONVERT_EXAMPLES) + STATUSES);
}

void AddRestore(CLI::App& command, RestoreOptions& options)
{
    AddFiles(command, options.input);
    command
        .add_option("--backup", options.backupSuffix,
                    "Suffix of the backups (default: from the record of the backups)")
        ->type_name("SUFFIX");
    command.add_flag("--dry-run,-n", options.dryRun, "Change nothing; report what would be done");
    command.add_flag("--force", options.force, "Also restore files that were changed after the conversion");
    command.footer(RESTORE_EXAMPLES);
}

int PrintEncodings()
{
    for (const auto& [encoding, names] : KnownEncodings()) {
        for (size_t i = 0; i < names.size(); ++i) std::cout << (i == 0 ? "" : " ") << names[i];
        std::cout << (encoding == &HZ || encoding == &UTF7 ? "  (read only)\n" : "\n");
    }
    std::cout << "and all that 'iconv --list' prints\n";
    return std::cout.flush() ? DONE : FAILED;
}

// The least number of letters to change, leave out, add or swap between two words.
size_t Distance(const std::string& a, const std::string& b)
{
    std::vector<std::vector<size_t>> cost(a.size() + 1, std::vector<size_t>(b.size() + 1));
    for (size_t i = 0; i <= a.size(); ++i)
        for (size_t k = 0; k <= b.size(); ++k) {
            if (i == 0 || k == 0) {
                cost[i][k] = i + k;
                continue;
            }
            cost[i][k] = std::min(
                {cost[i - 1][k] + 1, cost[i][k - 1] + 1, cost[i - 1][k - 1] + (a[i - 1] != b[k - 1])});
            if (i > 1 && k > 1 && a[i - 1] == b[k - 2] && a[i - 2] == b[k - 1])
                cost[i][k] = std::min(cost[i][k], cost[i - 2][k - 2] + 1);
        }
    return cost[a.size()][b.size()];
}

// The subcommand or option that a wrong word was likely meant to be, or empty.
std::string LikelyWord(const CLI::App& app, const std::string& word)
{
    std::vector<std::string> words;
    const bool isOption = word.rfind("--", 0) == 0;
    for (const CLI::App* const command : app.get_subcommands({})) {
        if (!isOption) words.push_back(command->get_name());
        if (!isOption || !command->parsed()) continue;
        for (const CLI::Option* const option : command->get_options())
            for (const std::string& name : option->get_lnames()) words.push_back("--" + name);
    }
    for (const CLI::Option* const option : app.get_options())
        for (const std::string& name : option->get_lnames())
            if (isOption) words.push_back("--" + name);
    std::string likely;
    size_t least = 3;  // letters: more is another word
    for (const std::string& candidate : words)
        if (const size_t distance = Distance(word, candidate); distance < least) {
            least = distance;
            likely = candidate;
        }
    return likely;
}

std::string Quoted(const std::string& word)
{
    return std::string("'").append(word).append("'");
}

// What is likely wrong with a line that has a word that nothing takes, or empty.
std::string WrongWord(const CLI::App& app, int argc, char** argv)
{
    bool first = true;
    for (int i = 1; i < argc; ++i) {
        const std::string word = std::string(argv[i]).substr(0, std::string(argv[i]).find('='));
        const bool isOption = word.rfind("--", 0) == 0 && word.size() > 2;
        if (isOption || (first && word.rfind('-', 0) != 0)) {
            const std::string likely = LikelyWord(app, word);
            if (!likely.empty() && likely != word)
                return Quoted(word).append(" is unknown; did you mean ").append(Quoted(likely)).append("?");
            if (likely.empty() && !isOption) return Quoted(word).append(" is not a command");
        }
        first = first && word.rfind('-', 0) == 0;
    }
    return {};
}

// What the parser would not take for a file name: an option, of which it knows "--" only before the first
// file, and a list in brackets.
bool LooksLikeSyntax(const std::string& name, bool afterDashes)
{
    return name.size() > 1 &&
           ((name.front() == '-' && afterDashes) || (name.front() == '[' && name.back() == ']'));
}

// In the order that the parser wants, the last first.
std::vector<std::string> Arguments(int argc, char** argv)
{
    std::vector<std::string> arguments;
    bool afterDashes = false;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (afterDashes || argument != "--")
            arguments.push_back(LooksLikeSyntax(argument, afterDashes) ? "./" + argument : argument);
        else
            afterDashes = true;
    }
    std::reverse(arguments.begin(), arguments.end());
    return arguments;
}

int Run(CLI::App& app, int argc, char** argv)
{
    CommandLine line;
    app.require_subcommand(1);
    app.fallthrough();
    app.set_version_flag("--version", "codetrans " CODETRANS_VERSION);
    app.footer(std::string(EXAMPLES) + STATUSES);
    AddCommon(app, line.common);
    CLI::App* const detect = app.add_subcommand("detect", "Print the encoding of each file");
    CLI::App* const convert =
        app.add_subcommand("convert", "Convert files, and refuse those that would lose characters");
    CLI::App* const restore = app.add_subcommand("restore", "Restore the files that convert --backup kept");
    CLI::App* const names =
        app.add_subcommand("names", "Convert file names in GBK or Big5, and garbled ones, to UTF-8");
    CLI::App* const doctor =
        app.add_subcommand("doctor", "Check the installation: the program, the model and the locale");
    // Options take longer to set up than a short file to read, so only those of commands that are named are.
    const auto isNamed = [&](const CLI::App* command) {
        return std::find(argv + 1, argv + argc, command->get_name()) != argv + argc;
    };
    if (isNamed(detect)) AddDetect(*detect, line.detect);
    if (isNamed(convert)) AddConvert(*convert, line);
    if (isNamed(restore)) AddRestore(*restore, line.restore);
    if (isNamed(names)) AddNames(*names, line.names);
    doctor->footer(DOCTOR_STATUSES);
    line.convert.sure = ENOUGH_MARGIN;

    try {
        app.parse(Arguments(argc, argv));
        if (convert->parsed() && line.list) return PrintEncodings();
        if (detect->parsed()) line.CheckInput(line.detect.input);
        if (detect->parsed()) line.CheckOnly(line.detect.only);
        if (convert->parsed()) line.CheckInput(line.convert.input);
        if (restore->parsed()) line.CheckInput(line.restore.input);
        if (convert->parsed()) line.Settle();
        if (restore->parsed()) line.CheckSuffix(line.restore.backupSuffix);
    } catch (const CLI::ParseError& error) {
        const std::string wrongWord = error.get_exit_code() == 0 ? "" : WrongWord(app, argc, argv);
        if (wrongWord.empty()) return app.exit(error) == 0 ? DONE : WRONG_USAGE;
        std::cerr << "codetrans: " << wrongWord << "\nRun with --help for more information.\n";
        return WRONG_USAGE;
    } catch (const UsageError& error) {
        std::cerr << "codetrans: " << error.text << '\n';
        return WRONG_USAGE;
    }
    if (names->parsed()) return Names(line.common, line.names);
    if (detect->parsed()) return Detect(line.common, line.detect);
    if (restore->parsed()) return Restore(line.common, line.restore);
    return convert->parsed() ? Convert(line.common, line.convert) : Doctor(line.common);
}
}  // namespace

int RunCommandLine(int argc, char** argv, bool endsProcess)
{
    try {
        auto app =
            std::make_unique<CLI::App>("Detects the encoding of Chinese text and converts it.", "codetrans");
        const int status = Run(*app, argc, argv);
        // Taking it apart takes longer than reading a short file. A pointer stays, so that it is no leak.
        [[maybe_unused]] static CLI::App* volatile s_kept = nullptr;
        if (endsProcess) s_kept = app.release();
        return status;
    } catch (const std::bad_alloc&) {
        std::cerr << "codetrans: out of memory\n";
        return FAILED;
    } catch (const std::exception& error) {
        std::cerr << "codetrans: " << error.what() << '\n';
        return FAILED;
    }
}
