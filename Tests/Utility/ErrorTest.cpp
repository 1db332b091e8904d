#include "Base/Utility/qvUtilError.h"

#include "Base/Utility/Internal/SystemErrorText.h"

#include "Support/CountingNew.h"
#include "Support/ErrorMatchers.h"
#include "Support/ScopedLocale.h"
#include "Support/StringPrinters.h"

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <functional>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace qvUtil {
namespace {

using qvString::IString;
using qvTest::FailsWith;
using qvTest::Succeeds;

TEST(Error, TheNumberAloneDecides) {
    EXPECT_THAT(Error(), Succeeds());
    EXPECT_FALSE(Error() || Error(0, "x"));
    EXPECT_TRUE(Error(-1, ""));
    EXPECT_STREQ(Error(0, "x").message(), "x");
}

TEST(Error, EqualityTellsNoTextFromAnEmptyOne) {
    Error const pairs[][2] = {{Error(), Error()},
                              {Error(0, "x"), Error(0, L"x")},
                              {Error(3, ""), Error(3, L"")},
                              {Error(3, IString()), Error(3, "%s", "")},
                              {Error(3, "text"), Error(3, L"text")},
                              {Error(4, "text"), Error(4, IString(L"text"))}};
    for (auto const & one : pairs)
        for (auto const & other : pairs) {
            EXPECT_EQ(one[0] == other[1], &one == &other);
            EXPECT_EQ(one[0] != other[1], &one != &other);
        }
    EXPECT_EQ(Error(3, static_cast<char const *>(nullptr)), Error(3, ""));
    for (int i : {0, 2, 3})
        EXPECT_STREQ(pairs[i][0].message(), "");
}

template <class Char>
Error fromList(Char const * format, ...) {
    std::va_list args;
    va_start(args, format);
    Error error(7, format, args);
    va_end(args);
    return error;
}

TEST(Error, FormatsNarrowAndWideTextAlike) {
    EXPECT_THAT(Error(2, "%s: %S (%d%%)", "narrow", L"wide", 5), FailsWith(2, "narrow: wide (5%)"));
    EXPECT_THAT(Error(2, L"%s: %S (%d%%)", "narrow", L"wide", 5), FailsWith(2, "narrow: wide (5%)"));
    // What converts to an argument list is an argument all the same.
    EXPECT_THAT(Error(1, "%d", 0), FailsWith(1, "0"));
    EXPECT_THAT(Error(1, L"%d", 0), FailsWith(1, "0"));
    EXPECT_THAT(Error(1, "%s", nullptr), FailsWith(1, "(null)"));
    EXPECT_THAT(fromList("%s-%d", "a", 1), FailsWith(7, "a-1"));
    EXPECT_THAT(fromList(L"%s-%d", "a", 1), FailsWith(7, "a-1"));
    EXPECT_THAT(Error(1, IString(L"100%d %s")), FailsWith(1, "100%d %s"));
    EXPECT_THAT(Error(1, "%s", std::string(5000, 'x').c_str()), FailsWith(1, std::string(5000, 'x')));

    qvTest::ScopedLocale const locale(qvTest::utf8Locale);
    EXPECT_THAT(Error(2, "\xC3\xA9 %s %S", "\xE2\x82\xAC", L"\xD83D\xDE00"),
                FailsWith(2, "\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80"));
}

TEST(Error, IsAValue) {
    Error copy;
    {
        Error const source(4, "of its own");
        copy = source;
        EXPECT_NE(Error(source).message(), source.message());
    }
    Error & self = copy;
    copy = self;
    copy.swap(self);
    EXPECT_THAT(copy, FailsWith(4, "of its own"));
    Error other;
    other.swap(copy);
    EXPECT_EQ(copy, Error());
    copy = std::move(other);
    EXPECT_THAT(copy, FailsWith(4, "of its own"));
    Error const withZero(1, IString(L"a\0b", 3));
    EXPECT_EQ(Error(withZero), withZero);
}

class Derived : public Error {
public:
    explicit Derived(int & destroyed) : Error(5, "first"), destroyed_(&destroyed) {}
    ~Derived() override { ++*destroyed_; }
    void set(char const * format, ...) {
        std::va_list args;
        va_start(args, format);
        setMsg(format, args);
        va_end(args);
    }

private:
    int * destroyed_;
};

TEST(Error, SubclassesSetTheTextAndTravelAsErrors) {
    int destroyed = 0;
    {
        std::unique_ptr<Error> const error = std::make_unique<Derived>(destroyed);
        static_cast<Derived &>(*error).set("%s then %d", "second", 2);
        EXPECT_THAT(*error, FailsWith(5, "second then 2"));
        static_cast<Derived &>(*error).set("");
        EXPECT_EQ(*error, Error(5, ""));
    }
    EXPECT_EQ(destroyed, 1);
    EXPECT_THAT([] { throw Error(6, "thrown"); }, qvTest::ThrowsError(6, "thrown"));
    static_assert(sizeof(Error) <= 3 * sizeof(void *) && std::is_nothrow_move_constructible_v<Error>);
}

// What does not get its memory throws, and the Error and the strings are what they were.
struct Texts {
    Error error = Error(3, "the old text, too long to stand inside a string");
    IString wide = L"wide";
    qvString::CString narrow = "narrow";
};

TEST(Error, WithoutMemoryStaysAsItWas) {
    Error const other(4, "another text, as long as the one that was there");
    IString const wideText(L"a text that is too long for the string itself");
    qvString::CString const narrowText("a text that is too long for the string itself");
    std::function<void(Texts &)> const operations[] = {
        [&](Texts & texts) { texts.error = Error(other); },
        [&](Texts & texts) { texts.error = other; },
        [&](Texts & texts) { texts.error = Error(1, "%s %S", "a", L"b"); },
        [&](Texts & texts) { texts.wide.append(wideText); },
        [&](Texts & texts) { texts.wide.insert(1, wideText); },
        [&](Texts & texts) { texts.wide = wideText; },
        [&](Texts & texts) { texts.wide.format(L"%300d", 1); },
        [&](Texts & texts) { texts.wide.assign(narrowText); },
        [&](Texts & texts) { texts.narrow.append(narrowText); },
        [&](Texts & texts) { texts.narrow.format("%300d", 1); },
    };
    Texts const before;
    for (auto const & operation : operations) {
        int failures = 0;
        for (bool isDone = false; !isDone; ++failures) {
            Texts texts;
            try {
                failingAllocation = failures + 1;
                operation(texts);
                isDone = true;
                failingAllocation = 0;
            } catch (std::bad_alloc const &) {
                ASSERT_TRUE(texts.error == before.error && texts.wide == before.wide && texts.narrow == before.narrow)
                    << "operation " << &operation - operations << ", allocation " << failures;
            }
        }
        EXPECT_GT(failures, 1) << "operation " << &operation - operations;
    }
}

TEST(SystemErrorText, IsTheSystemsOwn) {
    EXPECT_EQ(systemErrorText(ENOENT), IString("No such file or directory"));
    EXPECT_EQ(systemErrorText(0), IString("Success"));
    EXPECT_EQ(systemErrorText(123456), IString("An unknown WIN32 error occurred: 123456"));
    EXPECT_EQ(systemErrorText(static_cast<unsigned>(-2)), IString("An unknown WIN32 error occurred: -2"));
    errno = ENOSPC;
    IString const last = lastErrorText();
    EXPECT_EQ(last, IString("No space left on device"));
    errno = ECONNREFUSED;
    EXPECT_EQ(lastSocketErrorText(), IString("Connection refused"));
}

} // namespace
} // namespace qvUtil
