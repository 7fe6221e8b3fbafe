#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace qz::tool {

/// Work on one title that may be done on any thread.
class Job {
public:
    virtual ~Job() = default;
};

/// Does jobs on threads and delivers the finished jobs in the order in which they were added.
///
/// At most `window` jobs are in progress at a time, so memory does not grow with their number.
class OrderedJobs {
public:
    using Work = std::function<void(Job&)>;

    /// Calls `makeWork` once on each thread to make the function that does its jobs. Calls `deliver` on any thread, but
    /// on one at a time.
    OrderedJobs(size_t threads, size_t window, const std::function<Work()>& makeWork, Work deliver);
    /// Calls `finish`.
    ~OrderedJobs();

    /// Waits for room in the window.
    void add(std::unique_ptr<Job> job);
    /// Waits until every job has been delivered.
    void finish();

private:
    struct Place {
        std::unique_ptr<Job> job;
        bool isDone = false;
    };

    void run(const std::function<Work()>& makeWork);
    void deliverDone(std::unique_lock<std::mutex>& lock);

    const size_t window_;
    const Work deliver_;
    std::mutex mutex_;
    std::condition_variable hasWork_;
    std::condition_variable hasRoom_;
    // The jobs in progress, starting with the next to deliver; those from `begun_` on wait for a thread.
    std::deque<std::shared_ptr<Place>> places_;
    size_t begun_ = 0;
    bool isDelivering_ = false;
    bool isFinished_ = false;
    std::vector<std::thread> threads_;
};

}  // namespace qz::tool
