#include "Base/Strings/qvStringCharacters.h"
#include "Base/Utility/qvUtilSplit.h"
#include "Support/ErrorMatchers.h"
#include "Support/SeededRandom.h"
#include "Support/StringPrinters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <string>
#include <utility>
#include <vector>

namespace {

using qvString::CString;
using qvString::IString;
using qvTest::FailsWith;
using qvTest::SeededRandom;
using qvTest::Succeeds;
using qvUtil::join;
using qvUtil::split;
using qvUtil::splitWithQuotes;
using qvUtil::splitWithQuotesAndBackslash;
using Strings = std::vector<std::string>;

std::string plain(CString const & text) { return std::string(text.asChar(), text.length()); }

// Wide texts of these tests are of ASCII, with zeros.
std::string plain(IString const & text) {
    std::string narrow;
    for (unsigned i = 0; i < text.length(); ++i)
        narrow += char(text[i]);
    return narrow;
}
IString wide(std::string const & narrow) {
    std::u16string const units(narrow.begin(), narrow.end());
    return IString(std::u16string_view(units));
}

template <class String>
Strings plain(qv::vector<String> const & texts) {
    Strings result;
    for (String const & text : texts)
        result.push_back(plain(text));
    return result;
}

// Letters, delimiters of all kinds, quotes, backslashes and zeros.
std::string oddText(SeededRandom & random, int maxLength) {
    static char const alphabet[] = {'a', 'b', ',', ',', ' ', '\t', '\n', '\r', '"', '"', '\\', '\0', '\xE4'};
    std::string text;
    for (int n = random.below(maxLength + 1); n > 0; --n)
        text += alphabet[random.below(sizeof alphabet)];
    return text;
}

// ---- split

// The last piece is open; where the text ends is no piece.
template <class IsDelimiter>
Strings slowSplit(std::string const & text, IsDelimiter isDelimiter, bool skipEmpty, bool keepDelimiters) {
    Strings pieces(1);
    for (char const c : text) {
        if (!isDelimiter(c)) {
            pieces.back() += c;
            continue;
        }
        if (keepDelimiters)
            pieces.emplace_back(1, c);
        pieces.emplace_back();
    }
    if (pieces.back().empty())
        pieces.pop_back();
    if (skipEmpty || keepDelimiters)
        std::erase(pieces, "");
    return pieces;
}

TEST(Split, IsLikeGoingFromCharacterToCharacter) {
    bool (*const isSpace)(char) = qvString::isSpace;
    bool (*const isSpaceWide)(wchar_t) = qvString::isSpace;
    auto const isComma = [](char c) { return c == ','; };
    SeededRandom random;
    for (int round = 0; round < 4000; ++round) {
        std::string text = oddText(random, 12);
        std::erase(text, '\xE4');
        bool const skip = random.oneIn(2);
        bool const keep = random.oneIn(2);
        Strings const byComma = slowSplit(text, isComma, skip, keep);
        Strings const bySpace = slowSplit(text, isSpace, skip, keep);
        CString const narrow(text);
        ASSERT_EQ(plain(split(narrow, ',', skip, keep)), byComma) << testing::PrintToString(narrow);
        ASSERT_EQ(plain(split(narrow, isSpace, skip, keep)), bySpace) << testing::PrintToString(narrow);
        ASSERT_EQ(plain(split(wide(text), L',', skip, keep)), byComma) << testing::PrintToString(narrow);
        ASSERT_EQ(plain(split(wide(text), isSpaceWide, skip, keep)), bySpace) << testing::PrintToString(narrow);
        ASSERT_EQ(plain(join(split(narrow, ',', skip, true))), text);
        ASSERT_EQ(plain(join(split(wide(text), L',', skip, true))), text);
    }
}

// ---- words

// What the rest of a text can begin with, as an expression in which ' is a double quote. The group is a word, or else
// the character in front of a fault's number.
struct Rule {
    Rule(std::string expression, std::string fault) : message(std::move(fault)) {
        std::replace(expression.begin(), expression.end(), '\'', '"');
        start.assign("^" + expression);
    }
    std::regex start;
    std::string message; // empty for a word; the character goes behind one that ends in a quote
};

// Of a word with escapes: what stands outside of quotes, and a part in quotes without the last one.
std::string const part = R"((?:[^'\\\s]|\\['\\]|'(?:[^'\\]|\\['\\])*'))", open = R"('(?:[^'\\]|\\['\\])*)";

std::vector<Rule> const quoteRules = {
    {R"('([^']*)'(?=\s|$))", ""},
    {R"(([^'\s]+)(?=\s|$))", ""},
    {R"((')[^']*$)", "Unmatched double quote"},
    {R"('[^']*'(\S))", "Unexpected character after double quote: '"},
    {R"([^'\s]*([^'\s])')", "Unexpected character before a double quote: '"},
};
std::vector<Rule> const escapeRules = {
    {"(" + part + R"(+)(?=\s|$))", ""},
    {part + "*(?=('))" + open + "$", "Unmatched double quote"},
    {part + "*(?:" + open + R"()?(\\)$)", "Single backslash character"},
    {part + "*(?:" + open + R"()?\\([^'\\]))", "Illegal escape of character '"},
};

// The words in front of the first fault, which goes to the other two.
Strings slowWords(std::string const & text, std::vector<Rule> const & rules, int & number, std::string & message) {
    Strings words;
    std::smatch found;
    std::regex const noSpace("\\S");
    for (auto at = text.begin(); std::regex_search(at, text.end(), found, noSpace);) {
        at = found[0].first;
        auto const rule = std::find_if(rules.begin(), rules.end(), [&](Rule const & one) {
            return std::regex_search(at, text.end(), found, one.start);
        });
        if (!rule->message.empty()) {
            number = int(found[1].second - text.begin());
            message = rule->message + (rule->message.ends_with('\'') ? found.str(1) + "'" : "");
            break;
        }
        words.push_back(found[1]);
        at = found[0].second;
    }
    return words;
}

TEST(SplitWithQuotes, FindsTheWordsOfTheGrammar) {
    SeededRandom random;
    for (int round = 0; round < 3000; ++round) {
        std::string text = oddText(random, 9);
        std::erase(text, '\xE4'); // what a message makes of it depends on the locale
        std::erase(text, '\0');   // ends a message
        for (bool const escapes : {false, true}) {
            SCOPED_TRACE(testing::PrintToString(text) + (escapes ? " with escapes" : ""));
            int number = 0;
            std::string message;
            Strings expected = slowWords(text, escapes ? escapeRules : quoteRules, number, message);
            if (escapes)
                for (std::string & word : expected)
                    word = std::regex_replace(word, std::regex(R"(\\(["\\])|")"), "$1");
            qv::vector<CString> words = {"left over"};
            EXPECT_THAT((escapes ? splitWithQuotesAndBackslash : splitWithQuotes)(CString(text), words),
                        FailsWith(number, message));
            ASSERT_EQ(plain(words), expected);
        }
    }
}

TEST(SplitWithQuotes, TheTextMayBeAWordAndNoTextAtAll) {
    qv::vector<CString> words = {"\xE4\"", "b c"};
    EXPECT_THAT(splitWithQuotes(words[1], words), Succeeds());
    EXPECT_EQ(plain(words), (Strings{"b", "c"}));
    EXPECT_EQ(splitWithQuotes("\xE4\"", words).num(), 1);
}

// ---- lines and small functions

TEST(SplitMultiLines, AgreesWithTheNumberOfLines) {
    struct {
        char const * text;
        Strings lines;
    } const cases[] = {
        {"", {""}}, {"a", {"a"}}, {"a\n", {"a", ""}}, {"\r\nb", {"", "", "b"}}, {"a\nb c\rd", {"a", "b c", "d"}}};
    for (auto const & [text, lines] : cases) {
        EXPECT_EQ(plain(qvUtil::splitMultiLines(text)), lines) << text;
        EXPECT_EQ(qvUtil::numMultiLines(text), int(lines.size())) << text;
    }
}

TEST(SmallTextFunctions, HoldForZerosAndBytes) {
    using namespace std::string_literals;
    EXPECT_EQ(plain(qvUtil::rebackslash(wide("\\a\0\\\\b"s))), "\\\\a\0\\\\\\\\b"s);
    EXPECT_EQ(plain(qvUtil::rebackslash(IString())), "");
    qv::vector<CString> texts;
    for (std::string const & text : {"b"s, "\xE4"s, "a\0b"s, "a"s, "b"s, ""s, "a\0b"s, "ab"s})
        texts.push_back(CString(text));
    EXPECT_EQ(plain(qvUtil::removeDuplicated(texts)), (Strings{"", "a", "a\0b"s, "ab", "b", "\xE4"}));
    EXPECT_TRUE(qvUtil::removeDuplicated({}).empty());
}

} // namespace
