// All names below a folder.
#ifndef CODETRANSCLI_NAMETREE_H
#define CODETRANSCLI_NAMETREE_H

#include <string>
#include <vector>

struct NameTree {
    struct Node {
        size_t parent = 0;  // its place in `nodes`
        std::string name;
    };

    // Links are not followed, and the folders of version control are not entered.
    explicit NameTree(const std::string& folder);

    // Of the folder that node `i` is in, and of the node.
    std::string FolderOf(size_t i) const { return PathOf(nodes[i].parent); }
    std::string PathOf(size_t i) const;

    std::vector<Node> nodes;  // the first one is the folder itself; each folder comes before what is in it
    std::vector<std::string> failures;

private:
    void Read(size_t folder);
};

#endif  // CODETRANSCLI_NAMETREE_H
