#include "Session.h"

#include <unistd.h>

#include <algorithm>
#include <boost/timer/progress_display.hpp>
#include <chrono>
#include <cstring>
#include <iostream>
#include <memory>
#include <new>
#include <thread>

#include "Model.h"

namespace
{
using Clock = std::chrono::steady_clock;

// Appears when the work has gone on for a while, and then holds back the remarks, which would tear it.
class Bar
{
public:
    Bar(bool wanted, uint64_t bytes)
        : m_bytes(bytes), m_wanted(wanted && bytes > 0 && isatty(STDERR_FILENO) == 1)
    {
    }
    ~Bar() { Finish(); }
    Bar(const Bar&) = delete;
    Bar& operator=(const Bar&) = delete;

    void Show(uint64_t bytes)
    {
        constexpr auto PATIENCE = std::chrono::seconds(1);
        if (!m_wanted || Clock::now() - m_begin < PATIENCE) return;
        if (m_display == nullptr)
            m_display = std::make_unique<boost::timer::progress_display>(m_bytes, std::cerr, "");
        const uint64_t grown = std::min(bytes, m_bytes) - m_display->count();
        if (grown > 0) *m_display += grown;
    }

    void Say(const std::string& remark)
    {
        if (m_display == nullptr)
            std::cerr << remark << std::flush;
        else
            m_held += remark;
    }

    void Finish()
    {
        if (m_display != nullptr && m_display->count() < m_bytes) std::cerr << '\n';
        m_display.reset();
        std::cerr << m_held << std::flush;
        m_held.clear();
    }

private:
    uint64_t m_bytes;
    bool m_wanted;
    Clock::time_point m_begin = Clock::now();
    std::unique_ptr<boost::timer::progress_display> m_display;
    std::string m_held;
};
}  // namespace

bool Begin(const CommonOptions& common)
{
    const std::string folder = FindModel(ModelFolders(common.directory));
    if (folder.empty() && common.directory.empty()) {
        std::cerr << "codetrans: no model found; 'codetrans doctor' shows where it was searched for\n";
        return false;
    }
    const std::string file = ModelFile(folder.empty() ? common.directory : folder);
    if (LoadModel(file)) return true;
    const ModelState model = CheckModel(file, false);
    std::cerr << "codetrans: the model " << file
              << " cannot be used: " << (model.fault.empty() ? "it cannot be loaded" : model.fault) << '\n';
    return false;
}

int Session::Run(OutcomeCounts& counts) const
{
    Bar display(bar && !common.quiet, inputs.bytes);
    if (!common.quiet)
        for (const std::string& remark : inputs.remarks) display.Say(remark);
    for (const std::string& failure : inputs.failures) display.Say(failure);

    Outcome worst = inputs.failures.empty() ? Outcome::DONE : Outcome::FAILED;
    Workers workers;
    workers.tasks = inputs.files.size();
    workers.processes = jobs != 0 ? jobs : std::max(1U, std::thread::hardware_concurrency());
    workers.work = [&](size_t task, const Workers::Progress& progress, const Workers::Send& send) {
        const Input& input = inputs.files[task];
        try {
            work(task, progress, send);
        } catch (const std::bad_alloc&) {
            send(task, {Outcome::FAILED, {}, Remark(input.path, "out of memory")});
        } catch (const std::exception& error) {
            send(task, {Outcome::FAILED, {}, Remark(input.path, error.what())});
        }
    };
    workers.finish = finish;
    workers.done = [&](size_t task, const Report& report) {
        std::cout << report.result;
        const bool named = report.remark.empty() || report.remark.back() == '\n';
        display.Say(named ? report.remark : Remark(inputs.files[task].path, report.remark));
        worst = std::max(worst, report.outcome);
        ++counts[static_cast<size_t>(report.outcome)];
    };
    workers.shown = [&](uint64_t bytes) { display.Show(bytes); };
    workers.Run();
    display.Finish();

    if (!std::cout.flush()) {
        std::cerr << "codetrans: cannot write standard output: " << strerror(errno) << '\n';
        return FAILED;
    }
    return StatusOf(worst);
}
