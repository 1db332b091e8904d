#include "Base/Strings/qvStringCharacters.h"
#include "Base/Utility/qvUtilSplit.h"
#include "Support/ErrorMatchers.h"
#include "Support/SeededRandom.h"
#include "Support/StringPrinters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
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

// From character to character; the last word is open, and goes when there is a fault.
Strings slowWords(std::string const & text, bool escapes, int & number, std::string & message) {
    Strings words;
    bool inWord = false, isQuoted = false, isClosed = false; // closed: a word has to end here
    int opening = 0;
    auto const fault = [&](int at, std::string const & what) {
        number = at;
        message = what;
        words.pop_back();
        return words;
    };
    for (int i = 0; i < int(text.size()); ++i) {
        char c = text[std::size_t(i)];
        bool const isBetween = qvString::isSpace(c) && !isQuoted;
        if (isClosed && !isBetween)
            return fault(i + 1, std::string("Unexpected character after double quote: '") + c + "'");
        if (c == '"' && !escapes && inWord && !isQuoted)
            return fault(i, "Unexpected character before a double quote: '" + text.substr(std::size_t(i) - 1, 1) + "'");
        if (!isBetween && !inWord)
            words.emplace_back();
        inWord = !isBetween;
        isClosed = false;
        if (c == '"') {
            isQuoted = !isQuoted;
            isClosed = !isQuoted && !escapes;
            opening = isQuoted ? i : opening;
            continue;
        }
        if (c == '\\' && escapes) {
            if (++i == int(text.size()))
                return fault(i, "Single backslash character");
            c = text[std::size_t(i)];
            if (c != '\\' && c != '"')
                return fault(i + 1, std::string("Illegal escape of character '") + c + "'");
        }
        if (inWord)
            words.back() += c;
    }
    return isQuoted ? fault(opening + 1, "Unmatched double quote") : words;
}

TEST(SplitWithQuotes, IsLikeGoingFromCharacterToCharacter) {
    SeededRandom random;
    for (int round = 0; round < 20000; ++round) {
        std::string text = oddText(random, 9);
        std::erase(text, '\xE4'); // what a message makes of it depends on the locale
        std::erase(text, '\0');   // ends a message
        for (bool const escapes : {false, true}) {
            int number = 0;
            std::string message;
            Strings const expected = slowWords(text, escapes, number, message);
            qv::vector<CString> words = {"left over"};
            ASSERT_THAT((escapes ? splitWithQuotesAndBackslash : splitWithQuotes)(CString(text), words),
                        FailsWith(number, message))
                << testing::PrintToString(text) << escapes;
            ASSERT_EQ(plain(words), expected) << testing::PrintToString(text) << escapes;
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
