#include "Base/Utility/qvUtilUniqueNames.h"
#include "Support/SeededRandom.h"
#include "Support/StringPrinters.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>

namespace {

using qvString::CString;
using qvTest::SeededRandom;
using qvUtil::UniqueNames;

TEST(UniqueNames, NumbersWhatIsThere) {
    struct {
        char const * separator;
        char const * suffix;
        char const * inserted; // one after the other, with blanks in between
        char const * results;
    } const cases[] = {
        {"-", "", "abc abc abc abc-1 abc-7 abc", "abc abc-1 abc-2 abc-3 abc-7 abc-8"},
        {"-", "", "abc-1 abc abc", "abc-1 abc abc-2"},
        {"-", "", "abc-1 abc-1", "abc-1 abc-2"},
        {"-", "", "abc-x abc-x abc-x-5 abc-x", "abc-x abc-x-1 abc-x-5 abc-x-6"},
        {"-", "", "a- a- a--1 a-", "a- a--1 a--2 a--3"},
        {"-", "", "-1 -1 -", "-1 -2 -"},
        {"_", "", "a_1 a_1 a-1", "a_1 a_2 a-1"},
        {"-", "", "a-007 a-007 a-8", "a-007 a-8 a-9"},
        {"--", "", "a-- a-- a--", "a-- a--1 a--2"},
        {"-", ".x", "abc.x abc.x abc.x abc abc .x .x", "abc.x abc-1.x abc-2.x abc abc-1 .x .x-1"},
        {"-", ".x", "abc-4.x abc-9 abc-4.x abc-4 abc-4", "abc-4.x abc-9 abc-5.x abc-4 abc-10"},
        // Names with the same base need not stand side by side.
        {"-", "", "abc abc-5 abc!-1 abc", "abc abc-5 abc!-1 abc-6"},
        {"-", "", "a a!b-3 a-4 a-b a-b-9 a", "a a!b-3 a-4 a-b a-b-9 a-5"},
        // Numbers that an int does not hold, or whose successor it does not hold, are passed over.
        {"-", "", "a a-2147483648 a-99999999999999999999 a", "a a-2147483648 a-99999999999999999999 a-1"},
        {"-", "", "a a-2147483646 a a", "a a-2147483646 a-2147483647 a-1"},
        // Results that are not recognised as numbered.
        {"", "", "a a a", "a a1 a2"},
        {"-", "1", "abc abc abc abc", "abc abc-1 abc-2 abc-3"},
    };
    for (auto const & one : cases) {
        UniqueNames names(one.separator, one.suffix);
        std::istringstream all(one.inserted);
        std::string results;
        for (std::string name; all >> name;)
            results.append(results.empty() ? "" : " ").append(names.insert(CString(name)).asChar());
        EXPECT_EQ(results, one.results) << one.inserted;
    }
}

TEST(UniqueNames, NeverGivesANameTwice) {
    SeededRandom random;
    for (int round = 0; round < 300; ++round) {
        auto const piece = [&random](int maxLength) {
            std::string text;
            for (int n = random.below(maxLength + 1); n > 0; --n)
                text += "a-!1"[random.below(4)];
            return text;
        };
        UniqueNames names(CString(piece(2)), CString(piece(2)));
        std::set<std::string> given;
        for (int i = 0; i < 40; ++i) {
            if (random.oneIn(10))
                names.setSeparator(CString(piece(2)));
            if (random.oneIn(10))
                names.setSuffix(CString(piece(2)));
            std::string const name = piece(5);
            std::string const result = names.insert(CString(name)).asChar();
            bool const wasThere = given.count(name) != 0;
            ASSERT_TRUE(given.insert(result).second) << result;
            ASSERT_EQ(result != name, wasThere);
        }
        ASSERT_EQ(names.getNames().size(), int(given.size()));
    }
}

TEST(UniqueNames, ACopyBorrows) {
    UniqueNames owner;
    {
        UniqueNames copy(owner);
        copy.insert("a");
        copy.setSeparator("+");
    }
    EXPECT_EQ(owner.insert("a"), "a+1");
}

} // namespace
