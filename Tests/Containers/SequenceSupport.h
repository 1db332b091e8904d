// What the tests of vectors and lists share: elements made from numbers, and the course of a test beside a model.

#ifndef qvTestSequenceSupport_h
#define qvTestSequenceSupport_h

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "Support/CountedElement.h"
#include "Support/SeededRandom.h"

namespace qvTest {

struct alignas(64) WideElement {
    int value = 0;
    WideElement() = default;
    WideElement(int v) : value(v) {}
    void operator&() const = delete; // where an element is, only std::addressof tells
    auto operator<=>(WideElement const &) const = default;
};

template <typename T>
T make(int value) {
    if constexpr (std::is_same_v<T, std::string>)
        return std::to_string(value);
    else
        return T(value);
}

template <typename T>
constexpr bool isCounted = std::is_same_v<T, MovableElement> || std::is_same_v<T, RootedElement>;

template <typename T>
int valueOf(T const & element) {
    if constexpr (std::is_same_v<T, std::string>)
        return std::stoi(element);
    else if constexpr (std::is_same_v<T, WideElement>)
        return element.value;
    else if constexpr (isCounted<T>)
        return element.value();
    else
        return int(element);
}

template <typename C>
std::vector<int> valuesOf(C const & container) {
    std::vector<int> values;
    for (auto const & element : container) {
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(std::addressof(element)) % alignof(typename C::value_type), 0U);
        values.push_back(valueOf(element));
    }
    return values;
}

// Random steps of a container beside its model, which compares the two after each.
template <template <typename> typename Model, typename T>
void goBesideModel(int rounds, int steps) {
    ElementBalance balance;
    SeededRandom random;
    for (int round = 0; round < rounds; ++round) {
        Model<T> model(random);
        for (int i = 0; i < steps; ++i) {
            model.step();
            ASSERT_NO_FATAL_FAILURE(model.check());
        }
        if (isCounted<T>) {
            ASSERT_EQ(balance.alive(), model.size());
        }
    }
}

} // namespace qvTest

#endif
