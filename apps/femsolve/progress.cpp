// Step timing and the progress line.
#include "progress.h"

#include <cstdio>

Steps::Steps(std::ostream &out, bool bShow, bool bTerminal)
    : m_out(out), m_bShow(bShow), m_bTerminal(bTerminal) {
    if (m_bShow)
        m_thread = std::thread(&Steps::Watch, this);
}

Steps::~Steps() {
    if (m_bActive)
        End();
    if (m_thread.joinable()) {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_bStop = true;
        }
        m_wake.notify_one();
        m_thread.join();
    }
}

void Steps::Begin(const char *pszName) {
    if (m_bActive)
        End();
    std::lock_guard<std::mutex> lock(m_mutex);
    m_step = pszName;
    m_start = Clock::now();
    m_bActive = true;
    m_bPrinted = false;
    m_nShown = 0;
}

void Steps::End() {
    std::lock_guard<std::mutex> lock(m_mutex);
    double s = std::chrono::duration<double>(Clock::now() - m_start).count();
    m_times.push_back({m_step, s});
    if (m_bPrinted) {
        char line[128];
        snprintf(line, sizeof line, "%s%-20s done in %.1f s\n", m_bTerminal ? "\r" : " ",
                 m_step.c_str(), s);
        m_out << line << std::flush;
    }
    m_bActive = false;
}

double Steps::Total() const {
    double t = 0;
    for (auto &p : m_times)
        t += p.second;
    return t;
}

void Steps::Watch() {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_bStop) {
        m_wake.wait_for(lock, std::chrono::milliseconds(250));
        if (!m_bActive || m_bStop)
            continue;
        double s = std::chrono::duration<double>(Clock::now() - m_start).count();
        if (s < 1.0 || (int)s == m_nShown || (m_bPrinted && !m_bTerminal))
            continue;
        m_nShown = (int)s;
        char line[128];
        snprintf(line, sizeof line, "%s%-20s %d s ...", m_bTerminal ? "\r" : "", m_step.c_str(),
                 m_nShown);
        m_out << line << std::flush;
        m_bPrinted = true;
    }
}
