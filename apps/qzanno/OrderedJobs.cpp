#include "apps/qzanno/OrderedJobs.h"

#include <utility>

namespace qz::tool {

OrderedJobs::OrderedJobs(size_t threads, size_t window, const std::function<Work()>& makeWork, Work deliver)
    : window_(window), deliver_(std::move(deliver)) {
    for (size_t i = 0; i < threads; ++i) threads_.emplace_back([this, makeWork] { run(makeWork); });
}

OrderedJobs::~OrderedJobs() {
    finish();
}

void OrderedJobs::add(std::unique_ptr<Job> job) {
    std::unique_lock lock(mutex_);
    hasRoom_.wait(lock, [this] { return places_.size() < window_; });
    places_.push_back(std::make_shared<Place>(Place{std::move(job)}));
    hasWork_.notify_one();
}

void OrderedJobs::finish() {
    {
        const std::lock_guard lock(mutex_);
        isFinished_ = true;
    }
    hasWork_.notify_all();
    for (std::thread& thread : threads_) thread.join();
    threads_.clear();
}

void OrderedJobs::run(const std::function<Work()>& makeWork) {
    const Work work = makeWork();
    std::unique_lock lock(mutex_);
    while (true) {
        hasWork_.wait(lock, [this] { return begun_ < places_.size() || isFinished_; });
        if (begun_ == places_.size()) return;
        const std::shared_ptr<Place> place = places_[begun_++];
        lock.unlock();
        work(*place->job);
        lock.lock();
        place->isDone = true;
        deliverDone(lock);
    }
}

void OrderedJobs::deliverDone(std::unique_lock<std::mutex>& lock) {
    // The delivering thread checks again before it stops, so no job finished meanwhile is left behind.
    if (isDelivering_) return;
    isDelivering_ = true;
    while (!places_.empty() && places_.front()->isDone) {
        const std::shared_ptr<Place> place = places_.front();
        lock.unlock();
        deliver_(*place->job);
        lock.lock();
        places_.pop_front();
        --begun_;
        hasRoom_.notify_one();
    }
    isDelivering_ = false;
}

}  // namespace qz::tool
