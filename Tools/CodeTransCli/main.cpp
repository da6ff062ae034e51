// codetrans: names the encoding of files and converts them, from the command line.
//
// Results go to standard output, everything else to standard error. Exit statuses: 0 done, 1 a file failed, 2
// wrong usage, 3 converted, but something was lost on the way.
#include <CodeTrans.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>
#include <optional>

#include "Text.h"

namespace
{
enum ExitStatus { DONE = 0, FAILED = 1, WRONG_USAGE = 2, LOSSY = 3 };

const char* EncodingName(int code)
{
    switch (code) {
        case ENCODE_UTF8:
            return "UTF-8";
        case ENCODE_GBK:
            return "GBK";
        case ENCODE_BIG5:
            return "Big5";
        case ENCODE_UNICODE:
            return "UTF-16LE";
        default:
            return "unknown";
    }
}

void Complain(const std::string& file, const std::string& what)
{
    std::cerr << "codetrans: " << file << ": " << what << '\n';
}

std::optional<std::string> ReadBytes(const std::string& name)
{
    std::string bytes;
    char block[65536];
    FILE* const file = fopen(name.c_str(), "rb");
    if (file != nullptr) {
        while (const size_t size = fread(block, 1, sizeof block, file)) bytes.append(block, size);
    }
    const bool failed = file == nullptr || ferror(file) != 0;
    if (failed) Complain(name, strerror(errno));
    if (file != nullptr) fclose(file);
    return failed ? std::nullopt : std::optional(std::move(bytes));
}

bool WriteBytes(const std::string& name, const std::string& bytes)
{
    std::ofstream file(name, std::ios::binary);
    file << bytes;
    file.close();
    if (!file) Complain(name, strerror(errno));
    return static_cast<bool>(file);
}

// The directory whose Data folder holds the model: as the caller says, else as installed, else as built.
bool LoadModel(const std::string& directory)
{
    const std::vector<std::string> candidates =
        directory.empty()
            ? std::vector<std::string>{CODETRANS_INSTALLED_DIRECTORY, CODETRANS_SOURCE_DIRECTORY}
            : std::vector<std::string>{directory};
    std::string model;
    for (const std::string& candidate : candidates) {
        // Looked for here first: a failing TQ_Init writes a log file into the current directory.
        model = candidate + "/Data/CodeTrans.model";
        if (std::ifstream(model) && TQ_Init(candidate.c_str(), nullptr) == 1) return true;
    }
    std::cerr << "codetrans: cannot load " << model << '\n';
    return false;
}

int Detect(const std::vector<std::string>& files)
{
    int status = DONE;
    for (const std::string& name : files) {
        if (const auto bytes = ReadBytes(name))
            std::cout << name << ": " << EncodingName(TQ_CodeDetect(bytes->data(), bytes->size())) << '\n';
        else
            status = FAILED;
    }
    return status;
}

int Convert(const std::string& in, const std::string& out, int target)
{
    const auto bytes = ReadBytes(in);
    if (!bytes) return FAILED;
    const int encoding = TQ_CodeDetect(bytes->data(), bytes->size());
    if (encoding == ENCODE_UNKNOWN) {
        Complain(in, "the encoding could not be told");
        return FAILED;
    }
    const Text text = Decode(*bytes, encoding);
    const Encoded result = Encode(text.units, target);
    if (!WriteBytes(out, result.bytes)) return FAILED;
    if (text.lost + result.lost == 0) return DONE;
    if (text.lost != 0)
        Complain(in, std::to_string(text.lost) + " characters are not legible " + EncodingName(encoding));
    if (result.lost != 0)
        Complain(out, std::to_string(result.lost) + " characters have no place in " + EncodingName(target));
    return LOSSY;
}

int Run(int argc, char** argv)
{
    CLI::App app{"Tells GBK, Big5, UTF-8 and UTF-16LE text apart and converts it.", "codetrans"};
    app.require_subcommand(1);
    app.set_version_flag("--version", std::to_string(CODETRANS_VERSION_MAJOR) + "." +
                                          std::to_string(CODETRANS_VERSION_MINOR) + "." +
                                          std::to_string(CODETRANS_VERSION_PATCH));
    std::string directory;
    app.add_option("--directory", directory, "Directory that holds Data/CodeTrans.model")
        ->envname("CODETRANS_DIRECTORY");

    std::vector<std::string> files;
    CLI::App* const detect = app.add_subcommand("detect", "Print the encoding of each file");
    detect->add_option("FILE", files, "Files to look at")->required();

    std::string in, out;
    int target = ENCODE_UTF8;
    const std::map<std::string, int> targets = {
        {"utf-8", ENCODE_UTF8}, {"gbk", ENCODE_GBK}, {"utf-16le", ENCODE_UNICODE}};
    CLI::App* const convert = app.add_subcommand("convert", "Convert a file whose encoding is detected");
    convert->add_option("--to", target, "Encoding to write")
        ->required()
        ->transform(CLI::CheckedTransformer(targets, CLI::ignore_case));
    convert->add_option("IN", in, "File to read")->required();
    convert->add_option("OUT", out, "File to write")->required();

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? DONE : WRONG_USAGE;
    }
    if (!LoadModel(directory)) return FAILED;
    return detect->parsed() ? Detect(files) : Convert(in, out, target);
}
}  // namespace

int main(int argc, char** argv)
{
    try {
        return Run(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "codetrans: " << error.what() << '\n';
        return FAILED;
    }
}
