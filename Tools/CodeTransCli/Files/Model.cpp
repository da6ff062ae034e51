// The file's form is told in Doc/ModelFormat.md.
#include "Model.h"

#include <STLCodeTrans.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <new>

#include "Source.h"

namespace fs = std::filesystem;

namespace
{
constexpr size_t TABLE_BYTES = 2 * 24576 * sizeof(uint16_t);
constexpr size_t NODES_OFFSET = TABLE_BYTES + 4;
constexpr size_t NODE_BYTES = 16;

uint32_t LittleEndian(std::string_view bytes, size_t offset)
{
    uint32_t value = 0;
    for (size_t i = 4; i-- > 0;) value = value << 8 | static_cast<unsigned char>(bytes[offset + i]);
    return value;
}

// A double array with failure links.
class Trie
{
public:
    Trie(std::string_view bytes, size_t count) : m_bytes(bytes), m_count(count), m_seen(count, false) {}

    // The fault found first, or empty.
    std::string Check()
    {
        std::vector<size_t> reached = {0};
        m_seen[0] = true;
        for (size_t i = 0; i < reached.size(); ++i) {
            const size_t node = reached[i];
            if (Field(node, BASE) + 255 >= m_count) return Fault(node, "has a transition outside the table");
            if (Field(node, FAIL) >= m_count) return Fault(node, "has a failure link outside the table");
            if (!IsValue(Field(node, VALUE))) return Fault(node, "has no valid value");
            for (size_t byte = 0; byte < 256; ++byte) {
                const size_t child = Field(node, BASE) + byte;
                if (Field(child, CHECK) != node || m_seen[child]) continue;
                m_seen[child] = true;
                reached.push_back(child);
            }
        }
        return CheckFailures(reached);
    }

private:
    enum FieldNumber { BASE, CHECK, FAIL, VALUE };

    size_t Field(size_t node, FieldNumber field) const
    {
        return LittleEndian(m_bytes, NODES_OFFSET + NODE_BYTES * node + 4 * static_cast<size_t>(field));
    }

    static bool IsValue(size_t value)
    {
        const size_t code = value >> 20;
        return code <= ENCODE_BIG5 || code == ENCODE_UNICODE;
    }

    static std::string Fault(size_t node, const char* what)
    {
        return "node " + std::to_string(node) + " " + what;
    }

    // Every chain must end at the root: those that are known to are marked.
    std::string CheckFailures(const std::vector<size_t>& reached)
    {
        std::vector<bool> ends(m_count, false);
        ends[0] = true;
        for (const size_t start : reached) {
            std::vector<size_t> chain;
            for (size_t node = start; !ends[node]; node = Field(node, FAIL)) {
                if (chain.size() > m_count || Field(node, FAIL) >= m_count)
                    return Fault(start, "has a failure chain without end");
                chain.push_back(node);
            }
            for (const size_t node : chain) ends[node] = true;
        }
        return {};
    }

    std::string_view m_bytes;
    size_t m_count;
    std::vector<bool> m_seen;
};
}  // namespace

std::string ProgramFile()
{
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error);
}

// Beside the program means prefix/share/CodeTrans for prefix/bin/codetrans, and the build folder for a
// program that was not installed.
std::vector<std::string> ModelFolders(const std::string& chosen)
{
    if (!chosen.empty()) return {chosen};
    const fs::path folder = fs::path(ProgramFile()).parent_path();
    if (folder.filename() == "CodeTransCli") return {folder.parent_path().parent_path()};
    return {folder.parent_path() / "share/CodeTrans", CODETRANS_INSTALLED_DIRECTORY};
}

std::string ModelFile(const std::string& folder)
{
    return folder + "/Data/CodeTrans.model";
}

std::string FindModel(const std::vector<std::string>& folders)
{
    for (const std::string& folder : folders)
        if (access(ModelFile(folder).c_str(), F_OK) == 0) return folder;
    return {};
}

ModelState CheckModel(const std::string& file, bool thorough)
{
    ModelState state;
    try {
        Source source(file);
        const std::string_view bytes = source.Fill(SIZE_MAX / 4);
        state.bytes = bytes.size();
        if (state.bytes < NODES_OFFSET + NODE_BYTES) {
            state.fault = "ends after " + std::to_string(state.bytes) + " bytes";
            return state;
        }
        state.nodes = LittleEndian(bytes, TABLE_BYTES);
        if (state.nodes == 0 || state.nodes > INT32_MAX ||
            (state.bytes - NODES_OFFSET) / NODE_BYTES < state.nodes)
            state.fault = "declares " + std::to_string(state.nodes) + " nodes and has room for " +
                          std::to_string((state.bytes - NODES_OFFSET) / NODE_BYTES);
        else if (thorough)
            state.fault = Trie(bytes, state.nodes).Check();
    } catch (const std::bad_alloc&) {
        state.fault = "out of memory";
    } catch (const std::exception& error) {
        state.fault = error.what();
    }
    return state;
}

bool LoadModel(const std::string& file)
{
    return CodeTrans_Map(file.c_str()) == 0;
}
