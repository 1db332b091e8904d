// Elements for container tests: they count how many are alive and how often they were copied and moved, can throw at
// the n-th copy, and notice when they are used before their construction, after their destruction or away from where
// they were built.

#ifndef qvTestCountedElement_h
#define qvTestCountedElement_h

#include <gtest/gtest.h>

#include <compare>
#include <functional>
#include <ostream>
#include <stdexcept>

namespace qvTest {

struct CopyFailure : std::runtime_error {
    CopyFailure() : std::runtime_error("copy refused") {}
};

struct ElementCounts {
    static inline int alive = 0;
    static inline int copies = 0;
    static inline int moves = 0;
    static inline int copiesUntilFailure = 0; // 0: copies never fail; 1: the next one does

    static void reset() {
        copies = 0;
        moves = 0;
        copiesUntilFailure = 0;
    }
};

// With mayMoveBitwise it has the trait that qv::vector asks for; without it, it notices when its address has changed.
template <bool mayMoveBitwise>
class CountedElement {
    struct NoOptIn;

public:
    using isBitwiseMovable = std::conditional_t<mayMoveBitwise, CountedElement, NoOptIn>;

    CountedElement() : CountedElement(0) {}
    CountedElement(int value) : value_(value) { built(); }
    CountedElement(CountedElement const & other) : value_(other.value()) {
        if (ElementCounts::copiesUntilFailure && --ElementCounts::copiesUntilFailure == 0)
            throw CopyFailure();
        ++ElementCounts::copies;
        built();
    }
    CountedElement(CountedElement && other) noexcept : value_(other.value()) {
        other.value_ = movedFrom;
        ++ElementCounts::moves;
        built();
    }
    CountedElement & operator=(CountedElement const & other) {
        CountedElement(other).swapValue(*this);
        return *this;
    }
    CountedElement & operator=(CountedElement && other) noexcept {
        check();
        value_ = other.value();
        other.value_ = movedFrom;
        ++ElementCounts::moves;
        return *this;
    }
    ~CountedElement() {
        check();
        self_ = nullptr;
        --ElementCounts::alive;
    }

    int value() const {
        check();
        return value_;
    }

    friend bool operator==(CountedElement const & a, CountedElement const & b) { return a.value() == b.value(); }
    friend auto operator<=>(CountedElement const & a, CountedElement const & b) { return a.value() <=> b.value(); }
    friend std::ostream & operator<<(std::ostream & out, CountedElement const & element) {
        return out << element.value();
    }

    static constexpr int movedFrom = -1;

private:
    void built() {
        self_ = mayMoveBitwise ? &anchor : static_cast<void const *>(this);
        ++ElementCounts::alive;
    }
    void check() const {
        if (self_ != (mayMoveBitwise ? &anchor : static_cast<void const *>(this)))
            ADD_FAILURE() << "used where no element lives";
    }
    void swapValue(CountedElement & other) { std::swap(value_, other.value_); }

    static inline char const anchor = 0;

    int value_;
    void const * self_;
};

using MovableElement = CountedElement<true>;
using RootedElement = CountedElement<false>;

// Fails the test when elements were left alive, or destroyed twice, between its construction and its end.
class ElementBalance {
public:
    ElementBalance() : before_(ElementCounts::alive) { ElementCounts::reset(); }
    ElementBalance(ElementBalance const &) = delete;
    ElementBalance & operator=(ElementBalance const &) = delete;
    ~ElementBalance() { EXPECT_EQ(ElementCounts::alive, before_); }

    int alive() const { return ElementCounts::alive - before_; }

private:
    int before_;
};

} // namespace qvTest

template <bool mayMoveBitwise>
struct std::hash<qvTest::CountedElement<mayMoveBitwise>> {
    std::size_t operator()(qvTest::CountedElement<mayMoveBitwise> const & element) const {
        return std::hash<int>()(element.value());
    }
};

#endif
