// doctor: checks the program, the model and the locale, and prints the command that repairs each.
#include <STLCodeTrans.h>
#include <unistd.h>

#include <iostream>
#include <string_view>

#include "Commands.h"
#include "Locale.h"
#include "Model.h"
#include "Report.h"

namespace
{
void Say(bool good, const std::string& what, const std::string& text)
{
    std::cout << (good ? "ok      " : "MISSING ") << what << ": " << text << '\n';
}

void Advise(const std::string& command)
{
    std::cout << "        to repair it: " << command << '\n';
}

std::string CommandThatInstallsModel(const std::string& folder)
{
    const std::string root = geteuid() == 0 ? "" : "sudo ";
    const bool packaged = ProgramFile().rfind("/usr/bin/", 0) == 0;
    if (packaged) return root + "dpkg --install codetrans_" CODETRANS_VERSION "_*.deb";
    return root + "install -D -m 644 Data/CodeTrans.model '" + ModelFile(folder) + "'";
}

bool CheckModelFile(const CommonOptions& common)
{
    const std::vector<std::string> folders = ModelFolders(common.directory);
    const std::string folder = FindModel(folders);
    if (folder.empty()) {
        Say(false, "model", "not found; searched for:");
        for (const std::string& candidate : folders)
            std::cout << "          " << ModelFile(candidate) << '\n';
        Advise(CommandThatInstallsModel(folders.back()));
        return false;
    }
    const ModelState model = CheckModel(ModelFile(folder), true);
    const bool good = model.fault.empty();
    if (good)
        Say(true, "model", ModelFile(folder) + ", " + std::to_string(model.nodes) + " nodes, no faults");
    else
        std::cout << "DAMAGED model: " << ModelFile(folder) << ": " << model.fault << '\n';
    if (!good) Advise(CommandThatInstallsModel(folder));
    return good;
}

// The two characters for "Chinese", in each encoding.
bool CheckDetection(const CommonOptions& common)
{
    struct Sample {
        int code;
        std::string_view bytes;
    };
    constexpr Sample SAMPLES[] = {{ENCODE_GBK, "\xD6\xD0\xCE\xC4"},
                                  {ENCODE_BIG5, "\xA4\xA4\xA4\xE5"},
                                  {ENCODE_UTF8, "\xE4\xB8\xAD\xE6\x96\x87"},
                                  {ENCODE_UNICODE, "\x2D\x4E\x87\x65"}};
    bool good = LoadModel(ModelFile(FindModel(ModelFolders(common.directory))));
    for (const Sample& sample : SAMPLES)
        good = good && CodeTrans_CodeDetect(sample.bytes.data(), sample.bytes.size()) == sample.code;
    std::cout << (good ? "ok      " : "WRONG   ")
              << "detection: two characters in each of the four encodings\n";
    return good;
}

bool CheckLocale()
{
    const bool there = LocaleIsThere();
    Say(there, "locale",
        std::string(LOCALE_NAME) +
            (there ? "" : ", which the library needs to convert between GBK and UTF-8 (codetrans does not)"));
    if (!there) Advise(CommandThatMakesLocale());
    return there;
}
}  // namespace

int Doctor(const CommonOptions& common)
{
    std::cout << "ok      program: codetrans " CODETRANS_VERSION ", " << ProgramFile() << '\n';
    const bool model = CheckModelFile(common) && CheckDetection(common);
    const bool locale = CheckLocale();
    if (!std::cout.flush()) return FAILED;
    return model && locale ? DONE : NOT_DONE;
}
