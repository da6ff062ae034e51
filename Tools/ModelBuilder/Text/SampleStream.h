// Samples drawn in a second thread while the first one learns, in the order of a single generator.
#ifndef MODEL_BUILDER_SAMPLE_STREAM_H
#define MODEL_BUILDER_SAMPLE_STREAM_H

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include "Samples.h"

class CSampleStream
{
public:
    // `count` samples of the seed; `source` must outlive the stream.
    CSampleStream(const CSampleSource& source, uint64_t seed, uint64_t count);
    ~CSampleStream();
    CSampleStream(const CSampleStream&) = delete;
    CSampleStream& operator=(const CSampleStream&) = delete;

    // The next one, valid until the next call. To be called `count` times at most.
    const Sample& Next();

private:
    using Batch = std::vector<Sample>;

    void DrawAll(uint64_t seed, uint64_t count);

    const CSampleSource& m_source;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Batch> m_drawn;
    bool m_stopped = false;
    Batch m_batch;
    size_t m_next = 0;
    std::thread m_thread;
};

#endif  // MODEL_BUILDER_SAMPLE_STREAM_H
