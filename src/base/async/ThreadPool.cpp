#include "base/async/ThreadPool.h"

#include <utility>

namespace dorix {

ThreadPool::ThreadPool(unsigned threads) {
    for (unsigned i = 0; i < threads; ++i) threads_.emplace_back([this] { run(); });
}

ThreadPool::~ThreadPool() {
    {
        std::scoped_lock lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    for (auto& thread : threads_) thread.join();
}

void ThreadPool::post(Work work) {
    {
        std::scoped_lock lock(mutex_);
        posted_.push_back(std::move(work));
    }
    wake_.notify_one();
}

void ThreadPool::run() {
    std::unique_lock lock(mutex_);
    while (true) {
        wake_.wait(lock, [this] { return stopping_ || !posted_.empty(); });
        if (stopping_) return;
        Work work = std::move(posted_.front());
        posted_.pop_front();
        lock.unlock();
        work();
        work = nullptr;
        lock.lock();
    }
}

}  // namespace dorix
