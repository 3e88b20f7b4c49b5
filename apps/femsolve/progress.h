// Step timing for femsolve's summary, with a progress line for a step that runs longer than
// a second. The library works in the caller's thread, so a watcher thread prints the line
// while a step is inside the library; it only ever writes, under a lock.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <ostream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

class Steps {
public:
    // bShow: a progress line at all; bTerminal: redraw it each second, else print it once.
    Steps(std::ostream &out, bool bShow, bool bTerminal);
    ~Steps();
    void Begin(const char *pszName);
    void End();
    double Total() const;
    const std::vector<std::pair<std::string, double>> &Times() const { return m_times; }

private:
    void Watch();
    using Clock = std::chrono::steady_clock;
    std::ostream &m_out;
    bool m_bShow, m_bTerminal;
    int m_nShown = 0; // whole seconds last shown
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::thread m_thread;
    bool m_bStop = false, m_bActive = false, m_bPrinted = false;
    std::string m_step;
    Clock::time_point m_start;
    std::vector<std::pair<std::string, double>> m_times;
};
