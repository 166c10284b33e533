#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace Quorvan::Tools {

/// Hands jobs from the threads of one stage to those of the next, a few at a time.
template <class Job>
class JobQueue {
public:
    explicit JobQueue(size_t most) : room(most) {}

    /// Waits for room. Answers false where the queue has been closed meanwhile.
    bool Push(Job job) {
        std::unique_lock guard(lock);
        change.wait(guard, [this] { return jobs.size() < room || closed; });
        if (closed)
            return false;
        jobs.push_back(std::move(job));
        change.notify_all();
        return true;
    }
    /// Waits for a job; nothing where no more will come.
    std::optional<Job> Pop() {
        std::unique_lock guard(lock);
        change.wait(guard, [this] { return !jobs.empty() || closed; });
        if (jobs.empty())
            return std::nullopt;
        Job job = std::move(jobs.front());
        jobs.pop_front();
        change.notify_all();
        return job;
    }
    /// No job comes behind those that wait.
    void Close() {
        const std::lock_guard guard(lock);
        closed = true;
        change.notify_all();
    }
    /// And those that wait are dropped.
    void Abandon() {
        const std::lock_guard guard(lock);
        jobs.clear();
        closed = true;
        change.notify_all();
    }

private:
    std::mutex lock;
    std::condition_variable change;
    std::deque<Job> jobs;
    size_t room;
    bool closed = false;
};

}  // namespace Quorvan::Tools
