#include "Output.h"

#include <string_view>

namespace
{
constexpr size_t TOGETHER = 1 << 18;  // bytes that are written together
constexpr size_t HEAD = 1 << 16;
}  // namespace

void Output::Pass()
{
    const bool isHeld = IsDirect() && m_written == 0;
    if (m_isStopped)
        m_buffer.clear();
    else if (m_buffer.size() >= (isHeld ? m_held : TOGETHER))
        Write(m_buffer.size());
}

void Output::Stop(size_t proven)
{
    if (!m_isStopped && IsPartial()) Write(proven);
    m_isStopped = true;
    m_buffer.clear();
}

void Output::Write(size_t size)
{
    const std::string_view bytes = std::string_view(m_buffer).substr(0, size);
    if (m_target != nullptr) m_target->Write(bytes);
    m_written += bytes.size();
    if (m_head.size() < HEAD) m_head += bytes.substr(0, HEAD);
    m_buffer.clear();
}
