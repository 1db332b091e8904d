#include "Preparation.h"

#include "Support/Names.h"

#include "Base/Utility/qvUtilProgress.h"

#include <algorithm>
#include <chrono>
#include <system_error>

namespace {

// A file waits in memory with a MiB at most.
constexpr std::size_t aheadOfEach = 8;
constexpr std::size_t mostWorkers = 16;

} // namespace

Preparation::Preparation(std::vector<FileToAdd> const & files, bool compress) : files_(files), compress_(compress) {
    if (files_.empty())
        return;
    std::size_t const processors = std::max(std::thread::hardware_concurrency(), 1U);
    std::size_t const count = std::min({processors, mostWorkers, files_.size()});
    slots_.resize(count * aheadOfEach);
    try {
        while (workers_.size() < count)
            workers_.emplace_back([this] { work(); });
    } catch (std::system_error const &) {
        // Fewer do it too; without any, the caller works.
    }
}

Preparation::~Preparation() {
    {
        std::lock_guard const lock(mutex_);
        isEnding_ = true;
    }
    changed_.notify_all();
    for (std::thread & worker : workers_)
        worker.join();
}

Prepared Preparation::prepare(FileToAdd const & file) {
    std::int64_t counted = 0;
    auto const count = [&](qvUtil::Progress & at) {
        auto const now = static_cast<std::int64_t>(at.get() * static_cast<double>(file.size));
        std::lock_guard const lock(mutex_);
        bytes_ += now - counted;
        counted = now;
    };
    qvUtil::Progress progress;
    progress.getSigUpdate().addCallback(count);
    Prepared result;
    result.error = result.source.prepare(nameOf(file.file), compress_, &progress);
    return result;
}

void Preparation::work() {
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return isEnding_ || begun_ == files_.size() || begun_ < taken_ + slots_.size(); });
        if (isEnding_ || begun_ == files_.size())
            return;
        std::size_t const index = begun_++;
        lock.unlock();
        Slot done;
        try {
            done.prepared = prepare(files_[index]);
        } catch (...) {
            done.thrown = std::current_exception();
        }
        done.isReady = true;
        lock.lock();
        slots_[index % slots_.size()] = std::move(done);
        changed_.notify_all();
    }
}

Prepared Preparation::take(std::function<void(std::int64_t)> const & waiting) {
    if (workers_.empty())
        return prepare(files_[taken_++]);
    std::unique_lock lock(mutex_);
    Slot & slot = slots_[taken_ % slots_.size()];
    while (!changed_.wait_for(lock, std::chrono::milliseconds(100), [&] { return slot.isReady; })) {
        std::int64_t const bytes = bytes_;
        lock.unlock();
        waiting(bytes);
        lock.lock();
    }
    Slot taken = std::move(slot);
    slot = Slot();
    ++taken_;
    lock.unlock();
    changed_.notify_all();
    if (taken.thrown)
        std::rethrow_exception(taken.thrown);
    return std::move(taken.prepared);
}
