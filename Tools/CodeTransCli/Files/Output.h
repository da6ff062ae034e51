// The result of a conversion on its way to a target.
//
// What goes to a file can be thrown away until it is in its place. What goes to standard output or a device
// cannot be taken back: up to `held` bytes of it wait until all is known to be well.
#ifndef CODETRANSCLI_OUTPUT_H
#define CODETRANSCLI_OUTPUT_H

#include <cstdint>
#include <memory>
#include <string>

#include "Target.h"

class Output
{
public:
    explicit Output(size_t held) : m_held(held) {}

    // Until then, what comes is counted and goes nowhere.
    void Open(const std::string& path) { m_target = std::make_unique<Target>(path); }

    // What was converted is appended here; Pass writes it when there is enough.
    std::string& Buffer() { return m_buffer; }
    void Pass();
    void PassLast() { Write(m_buffer.size()); }

    // Of the buffer, only `proven` bytes are well, and nothing behind them is written any more: not even
    // they, unless a part has gone out already.
    void Stop(size_t proven);
    bool IsStopped() const { return m_isStopped; }

    bool IsPartial() const { return m_written > 0 && IsDirect(); }
    uint64_t Written() const { return m_written; }
    const std::string& Head() const { return m_head; }  // the first 64 KiB and some more

    // The target, to be prepared and put in its place; null where there is none.
    std::unique_ptr<Target> TakeTarget() { return std::move(m_target); }

private:
    bool IsDirect() const { return m_target != nullptr && m_target->IsDirect(); }
    void Write(size_t size);

    size_t m_held;
    std::unique_ptr<Target> m_target;
    std::string m_buffer, m_head;
    uint64_t m_written = 0;
    bool m_isStopped = false;
};

#endif  // CODETRANSCLI_OUTPUT_H
