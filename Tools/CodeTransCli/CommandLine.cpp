// The command line alone; the commands are in files of their own.
#include "CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <iostream>

#include "Commands.h"
#include "Encoding.h"
#include "NamesLine.h"
#include "Report.h"

namespace
{
constexpr size_t MOST_JOBS = 256;

constexpr const char* STATUSES =
    "Exit status: 0 all done, 1 something was undecided or refused, 2 wrong usage, 3 reading or writing\n"
    "failed, 4 converted with losses (--lossy).";

constexpr const char* EXAMPLES =
    "Examples:\n"
    "  codetrans detect *.txt                          which encoding is it?\n"
    "  codetrans convert --to utf-8 old.txt            the text in UTF-8, on standard output\n"
    "  codetrans convert --to utf-8 -o new.txt old.txt\n"
    "  codetrans convert --to utf-8 --in-place --backup .orig --recursive --jobs 4 folder\n"
    "  codetrans names folder                          which file names are in GBK or Big5?\n"
    "  codetrans doctor                                is all there that is needed?\n\n";

constexpr const char* DETECT_EXAMPLES =
    "Examples:\n"
    "  codetrans detect readme.txt\n"
    "  codetrans detect --recursive --json folder | jq -r 'select(.encoding == \"Big5\").name'\n\n";

constexpr const char* CONVERT_EXAMPLES =
    "Examples:\n"
    "  codetrans convert --to gbk --from big5 -o new.txt old.txt\n"
    "  codetrans convert --to utf-8 --in-place --backup .orig --recursive --jobs 4 folder\n"
    "  unzip -p old.zip readme.txt | codetrans convert --to utf-8 -\n\n";

// Thrown on a command line that is well-formed and yet not meant to be.
struct UsageError {
    std::string text;
};

int Encoding(const std::string& name)
{
    if (const auto code = EncodingNamed(name)) return *code;
    throw UsageError{"'" + name + "' is no encoding known here; there are utf-8, gbk, big5 and utf-16le"};
}

struct CommandLine {
    CommonOptions common;
    DetectOptions detect;
    ConvertOptions convert;
    NamesOptions names;
    std::string to, from;
    bool mark = false, noMark = false;

    // What the parser cannot see.
    void Settle()
    {
        convert.to = Encoding(to);
        if (!from.empty()) convert.from = Encoding(from);
        if (convert.to == ENCODE_BIG5)
            throw UsageError{
                "Big5 can be read but not written: the library has no encoder for it; "
                "choose utf-8, gbk or utf-16le"};
        if (mark && convert.to == ENCODE_GBK) throw UsageError{"GBK has no byte-order mark"};
        if (convert.force && from.empty())
            throw UsageError{"--force needs --from, which says what the files are"};
        if (mark || noMark) convert.mark = mark;
        if (convert.inPlace && !convert.out.empty()) throw UsageError{"--in-place and -o exclude each other"};
        if (!convert.backupSuffix.empty() && !convert.inPlace) throw UsageError{"--backup needs --in-place"};
        if (convert.backupSuffix.find('/') != std::string::npos)
            throw UsageError{"the suffix of a backup cannot contain '/'"};
    }
};

void AddCommon(CLI::App& app, CommonOptions& options)
{
    app.add_option("--directory", options.directory,
                   "Folder that holds Data/CodeTrans.model, if it is not beside the library or installed")
        ->envname("CODETRANS_DIRECTORY")
        ->type_name("DIR");
    CLI::Option* const quiet = app.add_flag("--quiet,-q", options.quiet, "Speak of failures and losses only");
    app.add_flag("--verbose,-v", options.verbose, "Speak of every file, and of more losses")->excludes(quiet);
}

void AddWalk(CLI::App& command, std::vector<std::string>& files, bool& recursive, size_t& jobs)
{
    command.add_option("FILE", files, "Files, folders (with --recursive), or - for standard input")
        ->required()
        ->type_name("");
    command.add_flag("--recursive,-r", recursive, "Walk folders; binaries in them are skipped");
    command.add_option("--jobs,-j", jobs, "Processes that share the work")
        ->check(CLI::Range(static_cast<size_t>(1), MOST_JOBS))
        ->type_name("N");
}

CLI::App* AddDetect(CLI::App& app, DetectOptions& options)
{
    CLI::App* const command = app.add_subcommand("detect", "Print the encoding of each file");
    AddWalk(*command, options.files, options.recursive, options.jobs);
    command->add_flag("--json", options.json, "One JSON object a line");
    command->footer(std::string(DETECT_EXAMPLES) + STATUSES);
    return command;
}

CLI::App* AddConvert(CLI::App& app, CommandLine& line)
{
    ConvertOptions& options = line.convert;
    CLI::App* const command = app.add_subcommand("convert", "Convert files; nothing is lost in silence");
    AddWalk(*command, options.files, options.recursive, options.jobs);
    command->add_option("--to,-t", line.to, "Encoding to write: utf-8, gbk or utf-16le")
        ->required()
        ->type_name("ENC");
    command->add_option("--from,-f", line.from, "Encoding to read: these or big5; detected when not given")
        ->type_name("ENC");
    command
        ->add_option("--output,-o", options.out, "File to write, or folder for several; - is standard output")
        ->type_name("OUT");
    command->add_flag("--in-place,-i", options.inPlace, "Replace each file by its converted form");
    command
        ->add_option("--backup", options.backupSuffix,
                     "Keep the old file under its name and this suffix; never converted with its folder")
        ->type_name("SUFFIX");
    CLI::Option* const mark =
        command->add_flag("--bom", line.mark, "Write a byte-order mark (default for utf-16le)");
    command->add_flag("--no-bom", line.noMark, "Write none (default for utf-8)")->excludes(mark);
    command->add_flag("--lossy", options.lossy, "Convert although characters are lost, and say how many");
    command->add_flag("--force", options.force,
                      "Convert as --from says, although a file seems to be converted already or to be UTF-8");
    command->footer(std::string(CONVERT_EXAMPLES) + STATUSES);
    return command;
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

int Run(int argc, char** argv)
{
    CLI::App app{"Tells GBK, Big5, UTF-8 and UTF-16LE text apart and converts it.", "codetrans"};
    CommandLine line;
    app.require_subcommand(1);
    app.fallthrough();
    app.set_version_flag("--version", "codetrans " CODETRANS_VERSION);
    app.footer(std::string(EXAMPLES) + STATUSES);
    AddCommon(app, line.common);
    const CLI::App* const detect = AddDetect(app, line.detect);
    const CLI::App* const convert = AddConvert(app, line);
    const CLI::App* const names = AddNames(app, line.names);
    app.add_subcommand("doctor", "Check the library, the model and the locale, and tell what mends them");

    try {
        app.parse(Arguments(argc, argv));
        if (convert->parsed()) line.Settle();
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? DONE : WRONG_USAGE;
    } catch (const UsageError& error) {
        std::cerr << "codetrans: " << error.text << '\n';
        return WRONG_USAGE;
    }
    if (names->parsed()) return Names(line.common, line.names);
    if (detect->parsed()) return Detect(line.common, line.detect);
    return convert->parsed() ? Convert(line.common, line.convert) : Doctor(line.common);
}
}  // namespace

int RunCommandLine(int argc, char** argv)
{
    try {
        return Run(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "codetrans: " << error.what() << '\n';
        return FAILED;
    }
}
