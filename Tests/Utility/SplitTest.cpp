#include "Base/Strings/qvStringCharacters.h"
#include "Base/Utility/qvUtilSplit.h"
#include "Support/ErrorMatchers.h"
#include "Support/SeededRandom.h"
#include "Support/StringPrinters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
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

// Takes one piece after the other off the front of a string.
template <class IsDelimiter>
Strings slowSplit(std::string rest, IsDelimiter isDelimiter, bool skipEmpty, bool keepDelimiters) {
    Strings pieces;
    for (;;) {
        std::size_t found = 0;
        while (found < rest.size() && !isDelimiter(rest[found]))
            ++found;
        if (found == rest.size())
            break;
        if (found > 0) {
            pieces.push_back(rest.substr(0, found));
            rest = rest.substr(found + (keepDelimiters ? 0 : 1));
        } else {
            if (keepDelimiters)
                pieces.push_back(rest.substr(0, 1));
            else if (!skipEmpty)
                pieces.push_back("");
            rest = rest.substr(1);
        }
    }
    if (!rest.empty())
        pieces.push_back(rest);
    return pieces;
}

TEST(Split, IsLikeTakingPiecesOffTheFront) {
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

TEST(Split, TheExamplesHold) {
    EXPECT_EQ(plain(split("a,,b", ',', false, false)), (Strings{"a", "", "b"}));
    EXPECT_EQ(plain(split("a,,b", ',', true, false)), (Strings{"a", "b"}));
    EXPECT_EQ(plain(split("a,,b", ',', true, true)), (Strings{"a", ",", ",", "b"}));
    EXPECT_EQ(plain(split(L",a,", L',', false, false)), (Strings{"", "a"}));
    EXPECT_EQ(plain(join(qv::vector<CString>())), "");
}

// ---- words

struct Words {
    Strings words;
    int number = 0;
    std::string message;
};

// State machines over single characters, one for each form of quoting.
Words slowWords(std::string const & text) {
    Words result;
    enum { between, unquoted, quoted, behindQuote } state = between;
    int opening = 0;
    std::string word;
    for (int i = 0; i <= int(text.size()); ++i) {
        bool const atEnd = i == int(text.size());
        char const c = atEnd ? ' ' : text[std::size_t(i)];
        bool const isSpace = qvString::isSpace(c);
        if (state == quoted && atEnd)
            return {result.words, opening + 1, "Unmatched double quote"};
        if (state == behindQuote && !isSpace)
            return {result.words, i + 1, std::string("Unexpected character after double quote: '") + c + "'"};
        if (state == unquoted && c == '"')
            return {result.words, i,
                    std::string("Unexpected character before a double quote: '") + text[std::size_t(i) - 1] + "'"};
        if (state == quoted && c == '"') {
            state = behindQuote;
        } else if (state != quoted && isSpace) {
            if (state != between)
                result.words.push_back(std::exchange(word, ""));
            state = between;
        } else if (state == between && c == '"') {
            opening = i;
            state = quoted;
        } else {
            word += c;
            state = state == between ? unquoted : state;
        }
    }
    return result;
}

Words slowEscapedWords(std::string const & text) {
    Words result;
    bool inWord = false, isQuoted = false;
    int opening = 0;
    std::string word;
    for (int i = 0; i < int(text.size()); ++i) {
        char const c = text[std::size_t(i)];
        if (!isQuoted && qvString::isSpace(c)) {
            if (std::exchange(inWord, false))
                result.words.push_back(std::exchange(word, ""));
            continue;
        }
        inWord = true;
        if (c == '"') {
            if ((isQuoted = !isQuoted))
                opening = i;
        } else if (c != '\\') {
            word += c;
        } else if (++i == int(text.size())) {
            return {result.words, i, "Single backslash character"};
        } else if (char const escaped = text[std::size_t(i)]; escaped == '\\' || escaped == '"') {
            word += escaped;
        } else {
            return {result.words, i + 1, std::string("Illegal escape of character '") + escaped + "'"};
        }
    }
    if (isQuoted)
        return {result.words, opening + 1, "Unmatched double quote"};
    if (inWord)
        result.words.push_back(word);
    return result;
}

TEST(SplitWithQuotes, IsLikeAStateMachine) {
    SeededRandom random;
    for (int round = 0; round < 20000; ++round) {
        std::string text = oddText(random, 9);
        std::erase(text, '\xE4'); // what a message makes of it depends on the locale
        std::erase(text, '\0');   // ends a message
        CString const narrow(text);
        for (bool const escapes : {false, true}) {
            qv::vector<CString> words = {"left over"};
            qvUtil::Error const error =
                escapes ? splitWithQuotesAndBackslash(narrow, words) : splitWithQuotes(narrow, words);
            Words const expected = escapes ? slowEscapedWords(text) : slowWords(text);
            ASSERT_THAT(error, FailsWith(expected.number, expected.message))
                << testing::PrintToString(narrow) << escapes;
            ASSERT_EQ(plain(words), expected.words) << testing::PrintToString(narrow) << escapes;
        }
    }
}

TEST(SplitWithQuotes, TheExamplesHold) {
    qv::vector<CString> words;
    EXPECT_THAT(splitWithQuotes("a \"b c\" d", words), Succeeds());
    EXPECT_EQ(plain(words), (Strings{"a", "b c", "d"}));
    EXPECT_THAT(splitWithQuotes("a\"b", words), FailsWith(1, "Unexpected character before a double quote: 'a'"));
    EXPECT_THAT(splitWithQuotes("\"a\"b", words), FailsWith(4, "Unexpected character after double quote: 'b'"));
    EXPECT_THAT(splitWithQuotes("ab \"", words), FailsWith(4, "Unmatched double quote"));
    EXPECT_EQ(plain(words), Strings{"ab"});
    EXPECT_THAT(splitWithQuotesAndBackslash("a\"b c\"d \"\"", words), Succeeds());
    EXPECT_EQ(plain(words), (Strings{"ab cd", ""}));
    EXPECT_THAT(splitWithQuotesAndBackslash("a\\", words), FailsWith(2, "Single backslash character"));

    // A text that is one of the words, and a byte that is no character of the locale.
    words = {"\xE4\"", "b c"};
    EXPECT_THAT(splitWithQuotes(words[1], words), Succeeds());
    EXPECT_EQ(plain(words), (Strings{"b", "c"}));
    EXPECT_EQ(splitWithQuotes("\xE4\"", words).num(), 1);
}

// ---- lines and small functions

TEST(SplitMultiLines, AgreesWithTheNumberOfLines) {
    SeededRandom random;
    auto const isLineEnd = [](char c) { return c == '\n' || c == '\r'; };
    for (int round = 0; round < 2000; ++round) {
        std::string const text = oddText(random, 10);
        // A mark at the end makes the last line a piece that is never left out.
        Strings expected = slowSplit(text + 'x', isLineEnd, false, false);
        expected.back().pop_back();
        ASSERT_EQ(plain(qvUtil::splitMultiLines(CString(text))), expected);
        ASSERT_EQ(qvUtil::numMultiLines(CString(text)), int(expected.size()));
    }
    EXPECT_EQ(plain(qvUtil::splitMultiLines("a\n")), (Strings{"a", ""}));
}

TEST(SmallTextFunctions, HoldForZerosAndBytes) {
    SeededRandom random;
    for (int round = 0; round < 500; ++round) {
        std::string text = oddText(random, 8);
        std::erase(text, '\xE4');
        std::string doubled;
        for (char const c : text)
            doubled += std::string(c == '\\' ? 2 : 1, c);
        ASSERT_EQ(plain(qvUtil::rebackslash(wide(text))), doubled);

        qv::vector<CString> texts;
        std::set<std::string> sorted;
        for (int n = random.below(20); n > 0; --n) {
            std::string const one = oddText(random, 2);
            texts.push_back(CString(one));
            sorted.insert(one);
        }
        ASSERT_EQ(plain(qvUtil::removeDuplicated(texts)), Strings(sorted.begin(), sorted.end()));
    }
}

} // namespace
