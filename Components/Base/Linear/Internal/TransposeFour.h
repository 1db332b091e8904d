#ifndef qvLinearTransposeFour_h
#define qvLinearTransposeFour_h

#include <utility>

namespace qvLinear {

template <class T>
void transposeFour(T (&m)[16]) {
    for (int i = 0; i < 4; ++i)
        for (int j = i + 1; j < 4; ++j)
            std::swap(m[4 * i + j], m[4 * j + i]);
}

} // namespace qvLinear

#endif
