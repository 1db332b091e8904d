// Matchers for operations that give an Error: failures are told by their exact number and text.
//
//     EXPECT_THAT(file.open(flags), Succeeds());
//     EXPECT_THAT(file.open(flags), FailsWith(3, "Can't open file a: No such file or directory"));
//     EXPECT_THAT([] { qvUtil::Interval("x"); }, ThrowsError(1, "Bad time string"));

#ifndef qvTestErrorMatchers_h
#define qvTestErrorMatchers_h

#include "Base/Utility/qvUtilError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace qvUtil {

inline void PrintTo(Error const & error, std::ostream * stream) {
    *stream << "Error " << error.num() << " \"" << error.message() << '"';
}

} // namespace qvUtil

namespace qvTest {

MATCHER(Succeeds, "succeeds") { return arg.num() == 0; }

MATCHER_P(FailsWithNumber, number, "fails with number " + std::to_string(number)) { return arg.num() == number; }

/// `text` is a narrow text, or a matcher for one.
MATCHER_P2(FailsWith, number, text, "fails with number " + std::to_string(number) + " and text that matches") {
    return arg.num() == number && testing::ExplainMatchResult(text, std::string(arg.message()), result_listener);
}

/// For a callable that throws an Error.
template <class Text>
auto ThrowsError(int number, Text text) {
    return testing::Throws<qvUtil::Error>(FailsWith(number, text));
}

} // namespace qvTest

#endif
