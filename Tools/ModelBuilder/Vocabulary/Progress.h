// How far a long stage has come, on a terminal alone, and lines of report between.
#ifndef MODEL_BUILDER_PROGRESS_H
#define MODEL_BUILDER_PROGRESS_H

#include <cstdint>
#include <string>

class CProgress
{
public:
    CProgress(std::string title, uint64_t all);
    ~CProgress();
    CProgress(const CProgress&) = delete;
    CProgress& operator=(const CProgress&) = delete;

    // Rewrites the line whenever another percent is done.
    void Show(uint64_t done);

    // A line that stays.
    void Say(const std::string& line);

private:
    void Clear() const;

    std::string m_title;
    uint64_t m_all, m_percent = 0;
    bool m_isTerminal;
};

#endif  // MODEL_BUILDER_PROGRESS_H
