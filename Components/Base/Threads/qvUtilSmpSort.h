// A merge sort on two threads of the installed pool.

#ifndef qvUtilSmpSort_h
#define qvUtilSmpSort_h

#include "Base/Threads/qvUtilThreadPool.h"
#include "Base/Threads/qvUtilThreadedAlg.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>

namespace qvUtil {

namespace detail {

// The range is sorted in two pieces, of which the first has the extra element.
inline std::ptrdiff_t firstPieceOf(std::ptrdiff_t size) { return size - size / 2; }

} // namespace detail

/// Sorts the two pieces of a range, one on thread 0 and one on thread 1.
template <typename T, typename Compare>
class SMPSortPiecewise : public ThreadedAlg {
public:
    SMPSortPiecewise(T * first, T * last, Compare compare) : first_(first), last_(last), compare_(compare) {}

    void execute(int threadIndex, int) override {
        T * const middle = first_ + detail::firstPieceOf(last_ - first_);
        if (threadIndex == 0)
            std::sort(first_, middle, compare_);
        else if (threadIndex == 1)
            std::sort(middle, last_, compare_);
    }

private:
    T * first_;
    T * last_;
    Compare compare_;
};

/// Merges the two pieces. As many elements as the first piece has are found from the front, and the others from the
/// back, so that the two threads share nothing but what both only read; nothing is moved before they are done.
template <typename T, typename Compare>
class SMPSortMerge : public ThreadedAlg {
public:
    SMPSortMerge(T * first, T * last, Compare compare)
        : first_(first), last_(last), buffer_(new T[static_cast<std::size_t>(last - first)]), compare_(compare) {}

    void execute(int threadIndex, int) override {
        if (threadIndex == 0)
            mergeForward();
        else if (threadIndex == 1)
            mergeBackward();
    }

    void finalize() override { std::move(buffer_.get(), buffer_.get() + (last_ - first_), first_); }

private:
    T * middle() const { return first_ + detail::firstPieceOf(last_ - first_); }

    // Of equal elements that of the first piece comes first, seen from either end. The first piece cannot run out here,
    // nor the second one below, whatever the comparison answers.
    void mergeForward() {
        T const * one = first_;
        T const * two = middle();
        T * const end = buffer_.get() + (middle() - first_);
        for (T * out = buffer_.get(); out != end; ++out)
            *out = two != last_ && compare_(*two, *one) ? *two++ : *one++;
    }

    void mergeBackward() {
        T const * one = middle();
        T const * two = last_;
        T * const begin = buffer_.get() + (middle() - first_);
        for (T * out = buffer_.get() + (last_ - first_); out != begin;)
            *--out = one != first_ && compare_(two[-1], one[-1]) ? *--one : *--two;
    }

    T * first_;
    T * last_;
    std::unique_ptr<T[]> buffer_;
    Compare compare_;
};

/// Sorts a range by the pool that is installed: serially where it has one thread, else on two of its threads, however
/// short the range is. Equal elements come out in any order. T must be copyable, and can be made without arguments.
template <typename T, typename Compare>
void smpSort(T * first, T * last, Compare compare) {
    ThreadPool & pool = ThreadPool::get();
    if (pool.numThreads() <= 1) {
        std::sort(first, last, compare);
        return;
    }
    SMPSortPiecewise<T, Compare> pieces(first, last, compare);
    pool.execute(pieces);
    SMPSortMerge<T, Compare> merging(first, last, compare);
    pool.execute(merging);
}

} // namespace qvUtil

#endif
