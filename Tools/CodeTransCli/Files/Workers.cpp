#include "Workers.h"

#include <poll.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <new>
#include <vector>

#include "Source.h"

namespace
{
constexpr int REDRAW_MILLISECONDS = 100;

struct Shared {
    std::atomic<size_t> nextTask;
    std::atomic<uint64_t> bytes;
};

class SharedPage
{
public:
    SharedPage()
        : m_page(mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))
    {
        if (m_page == MAP_FAILED) Fail("cannot allocate shared memory");
        new (m_page) Shared{};
    }
    ~SharedPage() { munmap(m_page, sizeof(Shared)); }
    SharedPage(const SharedPage&) = delete;
    SharedPage& operator=(const SharedPage&) = delete;
    Shared* operator->() const { return static_cast<Shared*>(m_page); }

private:
    void* m_page;
};

// A report on its way: this, then the two texts.
struct Header {
    size_t task;
    Outcome outcome;
    size_t resultSize, remarkSize;
};

bool WriteAll(int descriptor, const char* bytes, size_t size)
{
    while (size > 0) {
        const ssize_t written = write(descriptor, bytes, size);
        if (written < 0 && errno != EINTR) return false;
        bytes += written > 0 ? written : 0;
        size -= static_cast<size_t>(written > 0 ? written : 0);
    }
    return true;
}

bool ReadAll(int descriptor, char* bytes, size_t size)
{
    while (size > 0) {
        const ssize_t got = read(descriptor, bytes, size);
        if (got == 0 || (got < 0 && errno != EINTR)) return false;
        bytes += got > 0 ? got : 0;
        size -= static_cast<size_t>(got > 0 ? got : 0);
    }
    return true;
}

bool Send(int descriptor, size_t task, const Report& report)
{
    const Header header = {task, report.outcome, report.result.size(), report.remark.size()};
    std::string message(reinterpret_cast<const char*>(&header), sizeof header);
    message += report.result + report.remark;
    return WriteAll(descriptor, message.data(), message.size());
}

bool Receive(int descriptor, Header& header, Report& report)
{
    if (!ReadAll(descriptor, reinterpret_cast<char*>(&header), sizeof header)) return false;
    report.outcome = header.outcome;
    report.result.resize(header.resultSize);
    report.remark.resize(header.remarkSize);
    return ReadAll(descriptor, report.result.data(), header.resultSize) &&
           ReadAll(descriptor, report.remark.data(), header.remarkSize);
}

class Crew
{
public:
    explicit Crew(const Workers& workers) : m_workers(workers) {}

    void Run()
    {
        for (size_t i = 0; i < std::min(m_workers.processes, m_workers.tasks); ++i) Start();
        while (!m_pipes.empty()) Listen();
        const std::string end = Bury();
        for (; m_turn < m_workers.tasks; ++m_turn) {
            const auto found = m_waiting.find(m_turn);
            m_workers.done(m_turn,
                           found != m_waiting.end() ? found->second : Report{Outcome::FAILED, {}, end});
        }
    }

private:
    void Start()
    {
        int ends[2];
        if (pipe(ends) != 0) Fail("cannot create a pipe");
        fflush(nullptr);
        const pid_t child = fork();
        if (child < 0) Fail("cannot start a process");
        if (child == 0) {
            close(ends[0]);
            Work(ends[1]);
        }
        close(ends[1]);
        m_pipes.push_back({ends[0], POLLIN, 0});
        m_children.push_back(child);
    }

    // In the worker, which ends with the process that started it.
    [[noreturn]] void Work(int report)
    {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        const auto progress = [this](uint64_t bytes) { m_shared->bytes += bytes; };
        const auto send = [&](size_t task, const Report& done) {
            if (!Send(report, task, done)) _exit(0);
        };
        for (size_t task = m_shared->nextTask++; task < m_workers.tasks; task = m_shared->nextTask++)
            m_workers.work(task, progress, send);
        m_workers.finish(send);
        _exit(0);
    }

    void Listen()
    {
        if (poll(m_pipes.data(), m_pipes.size(), REDRAW_MILLISECONDS) < 0 && errno != EINTR)
            Fail("cannot wait");
        for (size_t i = m_pipes.size(); i-- > 0;) {
            if (m_pipes[i].revents == 0) continue;
            Header header;
            Report report;
            if (Receive(m_pipes[i].fd, header, report)) {
                m_waiting.emplace(header.task, std::move(report));
            } else {
                close(m_pipes[i].fd);
                m_pipes.erase(m_pipes.begin() + static_cast<std::ptrdiff_t>(i));
            }
        }
        for (auto next = m_waiting.find(m_turn); next != m_waiting.end(); next = m_waiting.find(++m_turn)) {
            m_workers.done(m_turn, next->second);
            m_waiting.erase(next);
        }
        m_workers.shown(m_shared->bytes);
    }

    // What to say of tasks without a report. Who stops reading our output wants no more of it, and no
    // complaint.
    std::string Bury()
    {
        std::string end = "not processed";
        for (const pid_t child : m_children) {
            int status = 0;
            if (waitpid(child, &status, 0) != child || !WIFSIGNALED(status)) continue;
            if (WTERMSIG(status) == SIGPIPE) raise(SIGPIPE);
            end = std::string("the process that worked on it was killed: ") + strsignal(WTERMSIG(status));
        }
        return end;
    }

    const Workers& m_workers;
    SharedPage m_shared;
    std::vector<struct pollfd> m_pipes;
    std::vector<pid_t> m_children;
    std::map<size_t, Report> m_waiting;  // reports that came before their turn
    size_t m_turn = 0;
};
}  // namespace

void Workers::Run() const
{
    if (tasks > 1) return Crew(*this).Run();
    const auto send = [this](size_t task, const Report& report) { done(task, report); };
    uint64_t total = 0;
    if (tasks == 1)
        work(
            0, [&](uint64_t bytes) { shown(total += bytes); }, send);
    finish(send);
}
