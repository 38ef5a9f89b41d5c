// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — allocator settings for a program that builds and drops large documents.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

namespace dorvane::memory {

// A list answer becomes a tree of a million small allocations that is dropped whole at the
// next load. With glibc's fast bins, dropping it sets off a long consolidation pass; and
// returning the memory to the system only to ask for it again at the next load costs page
// faults. Called once at start-up; does nothing on other C libraries.
void tuneForLargeDocuments();

// One worker thread that runs jobs in the order they were posted, away from the thread the
// person waits on. The thread starts with the first job; the destructor finishes every job
// posted before it returns.
class BackgroundQueue {
public:
    BackgroundQueue() = default;
    ~BackgroundQueue();
    BackgroundQueue(const BackgroundQueue&) = delete;
    BackgroundQueue& operator=(const BackgroundQueue&) = delete;

    void post(std::function<void()> job);
    // Returns when every job posted so far has finished.
    void wait();

private:
    void run();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::function<void()>> m_jobs;
    bool m_busy = false;
    bool m_stopping = false;
    std::thread m_thread;
};

// The queue disposeLater uses.
BackgroundQueue& disposalQueue();

// Destroys `value` on a worker thread of its own: a large tree (a list answer of a million
// nodes, the rows of a list) is dropped while the person goes on. Finished by exit.
template <class T>
void disposeLater(T&& value) {
    auto holder = std::make_shared<std::decay_t<T>>(std::forward<T>(value));
    disposalQueue().post([holder = std::move(holder)]() mutable { holder.reset(); });
}

}  // namespace dorvane::memory
