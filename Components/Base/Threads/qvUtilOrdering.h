// A sorted view of an array that stays as it is.

#ifndef qvUtilOrdering_h
#define qvUtilOrdering_h

#include "Base/Threads/qvUtilSmpSort.h"
#include "Base/qvBaseConfig.h"

#include <utility>

namespace qvUtil {

/// A permutation of the numbers 0 to n - 1: the places of another array's elements in the order of a sort.
///
///     qvUtil::Ordering byAge;
///     byAge.sort(people, n, [](Person const & a, Person const & b) { return a.age < b.age; });
///     Person const & youngest = people[byAge[0]];
class QV_EXPORT Ordering {
public:
    /// Compares two places by what stands there.
    template <typename T, typename Compare>
    class IndexedBinaryPredicate {
    public:
        IndexedBinaryPredicate(T const * values, Compare compare) : values_(values), compare_(compare) {}
        bool operator()(int i, int j) const { return compare_(values_[i], values_[j]); }

    private:
        T const * values_;
        Compare compare_;
    };

    Ordering() = default;
    /// Copies have numbers of their own.
    Ordering(Ordering const & other);
    Ordering & operator=(Ordering const & other);
    ~Ordering();

    /// Becomes the order of `n` values, at most 2^31 - 1, starting over whatever it was before. Uses the installed
    /// thread pool. Equal values come in any order. When it throws, or the comparison does, it stays as it was.
    template <typename T, typename Compare>
    void sort(T const * values, unsigned n, Compare compare) {
        Ordering sorted;
        sorted.resize(n);
        smpSort(sorted.indices_, sorted.indices_ + n, IndexedBinaryPredicate<T, Compare>(values, compare));
        swap(sorted);
    }

    unsigned size() const { return size_; }
    /// Null before the first sort.
    int const * get() const { return indices_; }
    int operator[](int i) const { return indices_[i]; }

private:
    void resize(unsigned n);
    void swap(Ordering & other) noexcept {
        std::swap(indices_, other.indices_);
        std::swap(size_, other.size_);
    }

    int * indices_ = nullptr;
    unsigned size_ = 0;
};

} // namespace qvUtil

#endif
