// One line on stderr, written over and over.
#include "Progress.h"

#include <unistd.h>

#include <iostream>

CProgress::CProgress(std::string title, uint64_t all)
    : m_title(std::move(title)), m_all(all), m_isTerminal(isatty(STDERR_FILENO) == 1)
{
}

CProgress::~CProgress()
{
    Clear();
}

void CProgress::Clear() const
{
    if (m_isTerminal) std::cerr << "\r\x1b[K";
}

void CProgress::Show(uint64_t done)
{
    const uint64_t percent = done * 100 / m_all;
    if (!m_isTerminal || percent == m_percent) return;
    m_percent = percent;
    std::cerr << '\r' << m_title << ": " << percent << " %" << std::flush;
}

void CProgress::Say(const std::string& line)
{
    Clear();
    std::cerr << line << '\n';
}
