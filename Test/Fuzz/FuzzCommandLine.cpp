// The program `codetrans` on any arguments, file contents and models, in a folder that no argument leads out
// of. It ends with one of its statuses and with nothing of the process changed or left open; what
// neither converts nor renames, or is wrong usage, leaves every file as it was, and no temporary file stays.
//
// Worker processes are slow to start and what they reach is not seen from here, so mostly their work is done
// in this process.
//
// Input: arguments (their number, and whether there are workers; then each: a word's number, or a length and
// bytes), then the content, which is that of a file, in pieces that of two more, standard input, and the
// nodes of a model.
#include <fcntl.h>
#include <unistd.h>

#include <clocale>
#include <iostream>
#include <sstream>

#include "CommandLine.h"
#include "Fuzz.h"
#include "Workers.h"

namespace fs = std::filesystem;

namespace
{
constexpr const char* WORDS[] = {"detect",
                                 "convert",
                                 "doctor",
                                 "--to",
                                 "--from",
                                 "utf-8",
                                 "gbk",
                                 "utf-16le",
                                 "big5",
                                 "--in-place",
                                 "--backup",
                                 ".orig",
                                 "-o",
                                 "out",
                                 "new.txt",
                                 "-",
                                 ".",
                                 "a.txt",
                                 "b.txt",
                                 "folder",
                                 "--recursive",
                                 "--jobs",
                                 "2",
                                 "--json",
                                 "--lossy",
                                 "--bom",
                                 "--no-bom",
                                 "--quiet",
                                 "--verbose",
                                 "--directory",
                                 "../odd",
                                 "--",
                                 "--version",
                                 "--help",
                                 "missing",
                                 "--force",
                                 "restore",
                                 "--dry-run",
                                 "--lines",
                                 "--eol",
                                 "crlf",
                                 "--only",
                                 "--print0",
                                 "--sure",
                                 "0",
                                 "--include",
                                 "*.txt",
                                 "--exclude",
                                 "b*",
                                 "--files-from",
                                 "-0",
                                 "utf-16be",
                                 "gb18030",
                                 "utf-7",
                                 "hz",
                                 "latin1",
                                 "--fix-declarations",
                                 "--list",
                                 "euc-kr",
                                 "iso-2022-cn",
                                 "names",
                                 "--zip",
                                 "--extract-to",
                                 "--apply"};

bool s_hasWorkers = false;

std::vector<std::string> MakeArguments(Input& input)
{
    std::vector<std::string> arguments = {"codetrans"};
    const unsigned number = input.Byte();
    s_hasWorkers = number >= 0xF0;
    for (unsigned count = number % 16; count > 0; --count) {
        const unsigned choice = input.Byte();
        arguments.emplace_back(choice < std::size(WORDS) ? WORDS[choice] : Harmless(input.Take(choice % 32)));
    }
    return arguments;
}

// In a folder within the process's own, so that even ".." stays there. A model is beside it, where walks do
// not come across so large a file.
void MakeFiles(const std::string& content)
{
    for (const char* const folder : {"folder", "out"}) fs::create_directory(folder);
    const size_t half = content.size() / 2;
    WriteBytes("a.txt", content);
    WriteBytes("b.txt", content.substr(0, half));
    WriteBytes("folder/c.txt", content.substr(half));
    fs::create_symlink("../b.txt", "folder/link");
    fs::create_directories("../odd/Data");
    WriteBytes("../odd/Data/CodeTrans.model", std::string(4 * MAPPING_ENTRIES, 'N') + content);
}

// Standard input comes from a file, standard output goes nowhere, nor do messages.
void Redirect()
{
    static std::ostringstream s_messages;
    static const bool s_isDone = [] {
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        REQUIRE(dup2(nowhere, STDOUT_FILENO) == STDOUT_FILENO);
        close(nowhere);
        std::cerr.rdbuf(s_messages.rdbuf());
        unsetenv("CODETRANS_DIRECTORY");
        return setlocale(LC_CTYPE, "C.UTF-8") != nullptr;
    }();
    REQUIRE(s_isDone);
    s_messages.str("");
    std::cout.clear();
    const int source = open("a.txt", O_RDONLY | O_CLOEXEC);
    REQUIRE(dup2(source, STDIN_FILENO) == STDIN_FILENO);
    close(source);
}

int LowestFreeDescriptor()
{
    const int descriptor = dup(STDIN_FILENO);
    close(descriptor);
    return descriptor;
}

bool Any(const std::vector<std::string>& arguments, const std::string& what)
{
    return std::any_of(arguments.begin(), arguments.end(),
                       [&](const std::string& a) { return a.find(what) != std::string::npos; });
}
}  // namespace

// The linker puts the first in the place of Workers::Run, which becomes the second.
extern "C" {
void __wrap__ZNK7Workers3RunEv(const Workers* workers);  // NOLINT(bugprone-reserved-identifier)
void __real__ZNK7Workers3RunEv(const Workers* workers);  // NOLINT(bugprone-reserved-identifier)
}

void __wrap__ZNK7Workers3RunEv(const Workers* workers)
{
    if (s_hasWorkers) return __real__ZNK7Workers3RunEv(workers);
    uint64_t bytes = 0;
    const auto send = [&](size_t task, const Report& report) { workers->done(task, report); };
    for (size_t task = 0; task < workers->tasks; ++task) {
        workers->work(
            task, [&](uint64_t more) { bytes += more; }, send);
        workers->shown(bytes);
    }
    workers->finish(send);
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size)
{
    const TempFolder outer;
    fs::create_directory("inner");
    fs::current_path("inner");
    Input input(data, size);
    std::vector<std::string> arguments = MakeArguments(input);
    MakeFiles(input.Rest());
    Redirect();
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    const auto before = Files();
    const int descriptor = LowestFreeDescriptor();

    const int status = RunCommandLine(static_cast<int>(arguments.size()), pointers.data());
    TQ_Exit();

    REQUIRE(status >= 0 && status <= WITH_LOSSES);
    REQUIRE(LowestFreeDescriptor() == descriptor && fs::current_path() == outer.Path("inner"));
    const auto after = Files();
    const bool mayChange = Any(arguments, "convert") || Any(arguments, "restore") || Any(arguments, "names");
    if (status == WRONG_USAGE || Any(arguments, "--dry-run") || !mayChange) REQUIRE(after == before);
    if (!Any(arguments, ".codetrans-"))
        for (const auto& [name, bytes] : after) REQUIRE(name.find(".codetrans-") == std::string::npos);
    return 0;
}
