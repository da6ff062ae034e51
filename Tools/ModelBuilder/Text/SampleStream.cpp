// A short queue of batches between the two threads.
#include "SampleStream.h"

#include <algorithm>

namespace
{
constexpr size_t BATCH = 2000, MOST_BATCHES = 8;
}  // namespace

CSampleStream::CSampleStream(const CSampleSource& source, uint64_t seed, uint64_t count)
    : m_source(source), m_thread([this, seed, count] { DrawAll(seed, count); })
{
}

CSampleStream::~CSampleStream()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopped = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

void CSampleStream::DrawAll(uint64_t seed, uint64_t count)
{
    CRandom random(seed);
    while (count > 0) {
        Batch batch(std::min<uint64_t>(BATCH, count));
        for (Sample& sample : batch) sample = m_source.Draw(random);
        count -= batch.size();
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_stopped || m_drawn.size() < MOST_BATCHES; });
        if (m_stopped) return;
        m_drawn.push_back(std::move(batch));
        lock.unlock();
        m_changed.notify_all();
    }
}

const Sample& CSampleStream::Next()
{
    if (m_next == m_batch.size()) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return !m_drawn.empty(); });
        m_batch = std::move(m_drawn.front());
        m_drawn.pop_front();
        m_next = 0;
        lock.unlock();
        m_changed.notify_all();
    }
    return m_batch[m_next++];
}
