#include "NameTree.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "Inputs.h"
#include "Report.h"

namespace fs = std::filesystem;

NameTree::NameTree(const std::string& folder)
{
    nodes.push_back({0, folder});
    // Not by recursion, so that no depth of folders is too much.
    for (size_t i = 0; i < nodes.size(); ++i) {
        std::error_code error;
        const bool isFolder = fs::is_directory(fs::symlink_status(PathOf(i), error));
        if (i == 0 || (isFolder && !error && !IsVersionControl(nodes[i].name))) Read(i);
    }
}

std::string NameTree::PathOf(size_t i) const
{
    std::vector<const std::string*> names = {&nodes[i].name};
    for (; i != 0; i = nodes[i].parent) names.push_back(&nodes[nodes[i].parent].name);
    std::string path = *names.back();
    for (size_t k = names.size() - 1; k-- > 0;) path += (path.back() == '/' ? "" : "/") + *names[k];
    return path;
}

void NameTree::Read(size_t folder)
{
    const std::string path = PathOf(folder);
    std::error_code error;
    std::vector<std::string> names;
    for (fs::directory_iterator i(path, error), end; !error && i != end; i.increment(error))
        names.push_back(i->path().filename());
    if (error) failures.push_back(Remark(path, "cannot be read: " + error.message()));
    std::sort(names.begin(), names.end());
    for (std::string& name : names) nodes.push_back({folder, std::move(name)});
}
