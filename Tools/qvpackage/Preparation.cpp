#include "Preparation.h"

#include "Support/Names.h"

#include "Base/Utility/qvUtilProgress.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

namespace {

constexpr std::size_t mostWorkers = 16;
// As long as no more are begun and not added, a worker takes the next ones.
constexpr std::size_t enoughAhead = 128;
constexpr std::int64_t enoughBytesAhead = std::int64_t{16} << 20;
// What a worker takes at once: to hand over each small file by itself would take as long as to read it.
constexpr std::size_t mostAtOnce = 16;
constexpr std::int64_t enoughAtOnce = 128 * 1024;
constexpr std::size_t numSlots = enoughAhead + mostAtOnce;

} // namespace

Preparation::Preparation(std::vector<FileToAdd> const & files, bool compress) : files_(files), compress_(compress) {
    if (files_.empty())
        return;
    // Without compression the one that adds has as much to do as a worker.
    std::size_t const processors = std::max(std::thread::hardware_concurrency(), 1U);
    std::size_t const wanted = compress ? processors : processors - 1;
    std::size_t const count = std::min({wanted, mostWorkers, files_.size()});
    slots_.resize(numSlots);
    workers_.reserve(count);
    try {
        while (workers_.size() < count)
            workers_.emplace_back([this] { work(); });
    } catch (std::exception const &) {
        // Fewer do it too; without any, the caller works.
    }
}

Preparation::~Preparation() {
    {
        std::lock_guard const lock(mutex_);
        isEnding_ = true;
    }
    room_.notify_all();
    for (std::thread & worker : workers_)
        worker.join();
}

Preparation::Slot Preparation::prepare(FileToAdd const & file) {
    std::int64_t counted = 0;
    auto const count = [&](qvUtil::Progress & at) {
        auto const now = static_cast<std::int64_t>(at.get() * static_cast<double>(file.size));
        bytes_ += now - counted;
        counted = now;
    };
    Slot slot;
    slot.isReady = true;
    try {
        qvUtil::Progress progress;
        progress.getSigUpdate().addCallback(count);
        slot.prepared.error = slot.prepared.source.prepare(nameOf(file.file), compress_, &progress);
    } catch (...) {
        slot.thrown = std::current_exception();
    }
    return slot;
}

// How many files a worker is to take where there is room: one at least.
std::size_t Preparation::claimed() const {
    std::size_t count = 0;
    for (std::int64_t bytes = 0; count < mostAtOnce && bytes < enoughAtOnce && begun_ + count < files_.size(); ++count)
        bytes += files_[begun_ + count].size;
    return count;
}

bool Preparation::hasRoom() const {
    return begun_ <= taken_ || (begun_ - taken_ <= enoughAhead && ahead_ <= enoughBytesAhead);
}

void Preparation::work() {
    std::array<Slot, mostAtOnce> done;
    std::unique_lock lock(mutex_);
    for (;;) {
        ++numIdle_;
        room_.wait(lock, [this] { return isEnding_ || begun_ == files_.size() || hasRoom(); });
        --numIdle_;
        if (isEnding_ || begun_ == files_.size())
            return;
        std::size_t const first = begun_;
        begun_ += claimed();
        std::size_t const end = begun_;
        for (std::size_t i = first; i < end; ++i)
            ahead_ += files_[i].size;
        lock.unlock();
        for (std::size_t i = first; i < end; ++i)
            done[i - first] = prepare(files_[i]);
        lock.lock();
        for (std::size_t i = first; i < end; ++i)
            slots_[i % numSlots] = std::move(done[i - first]);
        if (first <= taken_ && taken_ < end)
            ready_.notify_one();
    }
}

Prepared Preparation::take(std::function<void(std::int64_t)> const & waiting) {
    Slot taken;
    if (workers_.empty())
        taken = prepare(files_[taken_++]);
    else {
        if (nextInHand_ == inHand_.size())
            takeReady(waiting);
        taken = std::move(inHand_[nextInHand_++]);
    }
    if (taken.thrown)
        std::rethrow_exception(taken.thrown);
    return std::move(taken.prepared);
}

// Waits for the next file, and takes those behind it that are ready too: the caller and the workers are not to get in
// each other's way for each single one.
void Preparation::takeReady(std::function<void(std::int64_t)> const & waiting) {
    inHand_.clear();
    nextInHand_ = 0;
    std::unique_lock lock(mutex_);
    while (!ready_.wait_for(lock, std::chrono::milliseconds(100), [&] { return nextSlot().isReady; })) {
        lock.unlock();
        waiting(bytes_);
        lock.lock();
    }
    while (taken_ < begun_ && nextSlot().isReady) {
        inHand_.push_back(std::exchange(nextSlot(), Slot()));
        ahead_ -= files_[taken_].size;
        ++taken_;
    }
    if (numIdle_ > 0 && hasRoom())
        room_.notify_all();
}
