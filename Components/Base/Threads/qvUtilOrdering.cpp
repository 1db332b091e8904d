#include "Base/Threads/qvUtilOrdering.h"

#include <algorithm>
#include <numeric>

namespace qvUtil {

Ordering::Ordering(Ordering const & other) {
    if (other.size_ == 0)
        return;
    indices_ = new int[other.size_];
    size_ = other.size_;
    std::copy_n(other.indices_, size_, indices_);
}

Ordering & Ordering::operator=(Ordering const & other) {
    Ordering copy(other);
    swap(copy);
    return *this;
}

Ordering::~Ordering() { delete[] indices_; }

void Ordering::resize(unsigned n) {
    if (n != size_) {
        int * const fresh = new int[n];
        delete[] indices_;
        indices_ = fresh;
        size_ = n;
    }
    std::iota(indices_, indices_ + n, 0);
}

} // namespace qvUtil
