// The program `codetrans` on any arguments, file contents and models, in a folder that no argument leads out
// of. It ends with one of its statuses and with nothing of the process changed or left open; what is no
// conversion, or wrong usage, leaves every file as it was, and no temporary file stays.
//
// Input: arguments (their number, then each: a word's number, or a length and bytes), then the content, which
// is that of a file, in pieces that of two more, standard input, and the nodes of a model.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <clocale>
#include <iostream>
#include <sstream>
#include <vector>

#include "CommandLine.h"
#include "Folder.h"
#include "Workers.h"

namespace fs = std::filesystem;

namespace
{
constexpr char ODD_MODEL[] = "../odd";
constexpr const char* WORDS[] = {
    "detect",    "convert",     "doctor",     "--to",     "--from",    "utf-8",    "gbk",
    "utf-16le",  "big5",        "--in-place", "--backup", ".orig",     "-o",       "out",
    "new.txt",   "-",           ".",          "a.txt",    "b.txt",     "folder",   "--recursive",
    "--jobs",    "2",           "--json",     "--lossy",  "--bom",     "--no-bom", "--quiet",
    "--verbose", "--directory", ODD_MODEL,    "--",       "--version", "--help",   "missing"};

bool s_hasWorkers = false;

std::vector<std::string> MakeArguments(Input& input)
{
    std::vector<std::string> arguments = {"codetrans"};
    const unsigned number = input.Byte();
    s_hasWorkers = number >= 0xF0;
    for (unsigned count = number % 16; count > 0; --count) {
        const unsigned choice = input.Byte();
        arguments.emplace_back(choice < std::size(WORDS) ? WORDS[choice]
                                                         : Harmless(input.Take(choice % 32)).c_str());
    }
    return arguments;
}

void MakeFiles(const std::string& content)
{
    for (const char* const folder : {"folder", "out"}) fs::create_directory(folder);
    const size_t half = content.size() / 2;
    Folder::Write("a.txt", content);
    Folder::Write("b.txt", content.substr(0, half));
    Folder::Write("folder/c.txt", content.substr(half));
    fs::create_symlink("../b.txt", "folder/link");
}

// Beside the folder, so that walks do not come across the large file.
void MakeOddModel(const std::string& nodes)
{
    fs::create_directories(std::string(ODD_MODEL) + "/Data");
    Folder::Write(std::string(ODD_MODEL) + "/Data/CodeTrans.model",
                  std::string(4 * MAPPING_ENTRIES, 'N') + nodes);
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
extern "C" void __wrap__ZNK7Workers3RunEv(const Workers* workers);
extern "C" void __real__ZNK7Workers3RunEv(const Workers* workers);

void __wrap__ZNK7Workers3RunEv(const Workers* workers)
{
    if (s_hasWorkers) return __real__ZNK7Workers3RunEv(workers);
    uint64_t bytes = 0;
    for (size_t task = 0; task < workers->tasks; ++task) {
        workers->done(task, workers->work(task, [&](uint64_t more) { bytes += more; }));
        workers->shown(bytes);
    }
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size)
{
    static const Folder s_folder;
    const Stay stay(s_folder);
    Input input(data, size);
    std::vector<std::string> arguments = MakeArguments(input);
    const std::string content = input.Rest();
    MakeFiles(content);
    if (Any(arguments, ODD_MODEL)) MakeOddModel(content);
    Redirect();
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    const auto before = s_folder.Files();
    const int descriptor = LowestFreeDescriptor();
    const bool hadChildren = waitpid(-1, nullptr, WNOHANG) == 0;  // libFuzzer's own

    const int status = RunCommandLine(static_cast<int>(arguments.size()), pointers.data());
    TQ_Exit();

    REQUIRE(status >= 0 && status <= WITH_LOSSES);
    REQUIRE(LowestFreeDescriptor() == descriptor && fs::current_path() == s_folder.Path());
    REQUIRE(hadChildren || waitpid(-1, nullptr, WNOHANG) == -1);
    const auto after = s_folder.Files();
    if (status == WRONG_USAGE || !Any(arguments, "convert")) REQUIRE(after == before);
    if (!Any(arguments, ".codetrans"))
        for (const auto& [name, bytes] : after) REQUIRE(name.find(".codetrans") == std::string::npos);
    return 0;
}
