// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/memory.h"

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace dorvane::memory {

void tuneForLargeDocuments() {
#if defined(__GLIBC__)
    mallopt(M_MXFAST, 0);
    mallopt(M_TRIM_THRESHOLD, 256 << 20);
#endif
}

BackgroundQueue::~BackgroundQueue() {
    {
        std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_changed.notify_all();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void BackgroundQueue::post(std::function<void()> job) {
    {
        std::lock_guard lock(m_mutex);
        m_jobs.push_back(std::move(job));
        if (!m_thread.joinable()) {
            m_thread = std::thread([this] { run(); });
        }
    }
    m_changed.notify_all();
}

void BackgroundQueue::wait() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_jobs.empty() && !m_busy; });
}

void BackgroundQueue::run() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return !m_jobs.empty() || m_stopping; });
        if (m_jobs.empty()) {
            return;  // stopping, and every job is done
        }
        std::function<void()> job = std::move(m_jobs.front());
        m_jobs.pop_front();
        m_busy = true;
        lock.unlock();
        job();
        job = nullptr;  // what the job holds is dropped here too, off the caller's thread
        lock.lock();
        m_busy = false;
        m_changed.notify_all();
    }
}

BackgroundQueue& disposalQueue() {
    static BackgroundQueue queue;
    return queue;
}

}  // namespace dorvane::memory
