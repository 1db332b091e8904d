#include "Base/Containers/qvHashFunction.h"
#include "Base/Strings/qvStringIString.h"

#include "Support/ScopedLocale.h"
#include "Support/StringPrinters.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>

namespace qvString {
namespace {

template <class Char>
using Malloced = std::unique_ptr<Char[], void (*)(void *)>;

char const * const eAcute = "\xC3\xA9";

TEST(CString, ConstructsFromWhatCallersHave) {
    EXPECT_EQ(CString().length(), 0U);
    EXPECT_STREQ(CString(static_cast<char const *>(nullptr)).asChar(), "");
    EXPECT_EQ(CString(static_cast<char const *>(nullptr), 5), CString());
    EXPECT_EQ(CString("abc", -1), CString());
    EXPECT_EQ(CString("a\0c", 3).length(), 3U);
    EXPECT_EQ(CString('x'), CString("x"));
    EXPECT_EQ(CString(3, 'x'), "xxx");
    EXPECT_EQ(CString(std::string("standard")), std::string_view("standard"));
    EXPECT_EQ(CString::npos, 0xFFFFFFFFU);
    EXPECT_EQ(CString().maxSize(), 0xFFFFFFFEU);
    EXPECT_EQ(CString("abc").asCharStoreSize(), 4U);
    EXPECT_EQ(CString("abc").asMultibyteStoreSize(), 4U);
    CString string("abc");
    EXPECT_GE(string.reserve(1000), 1000U);
    EXPECT_EQ(string.capacity(), string.reserve(10));
    EXPECT_STREQ(Malloced<char>(string.copyAsChar(), std::free).get(), "abc");
    EXPECT_STREQ(Malloced<char>(string.copyAsMultibyte(), std::free).get(), "abc");
    EXPECT_THROW(string.reserve(0xFFFFFFFF), std::length_error);
    EXPECT_EQ(sizeof(CString), 2 * sizeof(void *));

    CString * const made = CString_create("made for C");
    EXPECT_EQ(*made, "made for C");
    CString_delete(made);
    CString_delete(nullptr);
}

TEST(CString, BytesCompareWithoutASign) {
    EXPECT_FALSE(CString("a\x80").isAscii());
    EXPECT_TRUE(CString("a\x7F").isAscii() && CString().isAscii());
    EXPECT_LT(CString("a"), CString("\x80"));
    EXPECT_EQ(CString("AbC").compareNoCase("aBc"), 0);
    EXPECT_LT(CString("ab").collateNoCase("AC"), 0);
}

struct Appended : CString {
    int calls = 0;
    using CString::append;
    CString & append(CString const & text) override {
        ++calls;
        return CString::append(text);
    }
};

TEST(CString, EveryAppendIsTheVirtualOne) {
    Appended string;
    CString & base = string;
    base.append("a").append('b') += CString("c");
    plusEqual(base, "d");
    EXPECT_EQ(base, "abcd");
    EXPECT_EQ(string.calls, 4);
}

TEST(IString, ConstructsFromWhatCallersHave) {
    EXPECT_EQ(IString(static_cast<wchar_t const *>(nullptr)), IString());
    EXPECT_EQ(IString(static_cast<wchar_t const *>(nullptr), 5), IString());
    EXPECT_EQ(IString(L"a\0c", 3).length(), 3U);
    EXPECT_EQ(IString(2, L'x'), u"xx");
    EXPECT_EQ(IString(2, 'x'), u"xx");
    EXPECT_EQ(IString('x'), IString(L'x'));
    EXPECT_EQ(IString(CString("narrow")), std::u16string_view(u"narrow"));
    EXPECT_EQ(IString(std::string_view("views", 4)), u"view");
    EXPECT_EQ(IString(std::u16string_view(u"\x20AC")), u"\x20AC");
    EXPECT_EQ(std::u16string_view(IString(L"\x20AC!")), u"\x20AC!");
    EXPECT_EQ(IString().maxSize(), 0x7FFFFFFEU);
    EXPECT_THROW(IString().reserve(0x7FFFFFFF), std::length_error);
    EXPECT_EQ(IString(L"abc").asWCharStoreSize(), 8U);
    EXPECT_EQ(IString(L"abc").asUnicodeStoreSize(), 8U);
    EXPECT_EQ(IString(Malloced<wchar_t>(IString(L"abc").copyAsWChar(), std::free).get()), u"abc");
    EXPECT_STREQ(Malloced<char>(IString(L"\x20AC").copyAsMultibyte(UTF8), std::free).get(), "\xE2\x82\xAC");
    EXPECT_STREQ(std::unique_ptr<char[]>(IStringToTCHARCopy(IString(L"a\x20AC"))).get(), "a?");
    EXPECT_EQ(IString(L"a\x20AC").convertToCString(), "a?");
    EXPECT_EQ(sizeof(IString), 2 * sizeof(void *));
    EXPECT_TRUE(IString(L"a\x7F").isAscii() && !IString(L"\x80").isAscii());
}

TEST(IString, NarrowTextComesInWithWordOfLosses) {
    struct Case {
        char const * text;
        Encoding encoding;
        std::u16string_view result;
        bool ok;
    };
    std::string const longText = std::string(2000, 'a') + "\xE2\x82\xAC";
    std::u16string const longResult = std::u16string(2000, u'a') + u"\x20AC";
    Case const cases[] = {
        {nullptr, UTF8, u"", true},
        {"", Multibyte, u"", true},
        {"plain", Multibyte, u"plain", true},
        {"\xC3\xA9!", Multibyte, u"\x3F\x3F!", false},
        {"\xC3\xA9!", UTF8, u"\x00E9!", true},
        {"\xC3!", UTF8, u"\xFFFD!", false},
        {"\xEF\xBB\xBFmark", UTF8, u"mark", true},
        {"\xEF\xBB\xBF", UTF8, u"", true},
        {longText.c_str(), UTF8, longResult, true},
    };
    for (Case const & c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.text));
        bool ok = !c.ok;
        EXPECT_EQ(IString(c.text, c.encoding, &ok), c.result);
        EXPECT_EQ(ok, c.ok);
        IString string(L"before");
        ok = !c.ok;
        EXPECT_EQ(string.assign(c.text, c.encoding, &ok), c.result);
        EXPECT_EQ(ok, c.ok);
        EXPECT_EQ(string.assign(CString(c.text), c.encoding), c.result);
    }
    bool ok = true;
    EXPECT_EQ(IString(3, '\xE9', UTF8, &ok), u"\xFFFD\xFFFD\xFFFD");
    EXPECT_FALSE(ok);
    EXPECT_EQ(IString('\xE9', Multibyte, &ok), u"?");
    EXPECT_FALSE(ok);
}

TEST(IString, NarrowFormFollowsTheText) {
    IString string(L"a");
    EXPECT_STREQ(string.asMultibyte(), "a");
    string.append(L"\x00E9");
    EXPECT_STREQ(string.asUTF8(), "a\xC3\xA9");
    EXPECT_EQ(string.asUTF8StoreSize(), 4U);
    EXPECT_STREQ(string.asMultibyte(), "a?");
    EXPECT_EQ(string.asMultibyteStoreSize(), 3U);
    string[0] = L'b';
    EXPECT_STREQ(string.asMultibyte(), "b?");
    string.at(1) = L'c';
    EXPECT_STREQ(string.asMultibyte(), "bc");
    string.format(L"%d", 12);
    EXPECT_STREQ(string.asMultibyte(), "12");

    // Every other operation that changes the text.
    using Change = IString & (*)(IString &);
    Change const changes[] = {
        [](IString & s) -> IString & { return s.assign(L"x"); },
        [](IString & s) -> IString & { return s.assign("x", UTF8); },
        [](IString & s) -> IString & { return s = L'x'; },
        [](IString & s) -> IString & { return s.insert(1, L"x"); },
        [](IString & s) -> IString & { return s.prepend(L'x'); },
        [](IString & s) -> IString & { return s.replace(0, 1, L'x'); },
        [](IString & s) -> IString & { return s.replace(IString(L"b"), IString(L"x")); },
        [](IString & s) -> IString & { return s.remove(0, 1); },
        [](IString & s) -> IString & { return s.strip(L' '); },
        [](IString & s) -> IString & { return s.rstrip(L' '); },
        [](IString & s) -> IString & { return s.stripSpaces(); },
        [](IString & s) -> IString & { return s.rstripSpaces(); },
        [](IString & s) -> IString & { return s.toUpperCase(), s; },
        [](IString & s) -> IString & { return s.substr(s, 1, 2), s; },
        [](IString & s) -> IString & { return s.erase(), s; },
    };
    for (Change const change : changes) {
        IString changed(L" ab ");
        EXPECT_STREQ(changed.asMultibyte(), " ab ");
        IString const & result = change(changed);
        EXPECT_NE(result, u" ab ");
        EXPECT_EQ(IString(result.asMultibyte()), result);
    }

    IString other(L"other");
    EXPECT_STREQ(other.asMultibyte(), "other");
    swap(string, other);
    EXPECT_STREQ(string.asMultibyte(), "other");
    EXPECT_STREQ(other.asMultibyte(), "12");
}

TEST(IString, AsksAgainOnlyWhatItDoesNotKnow) {
    IString const string(L"a\x00E9");
    bool ok = true;
    char const * const first = string.asMultibyte(Multibyte, nullptr);
    EXPECT_STREQ(first, "a?");
    string.asMultibyte(Multibyte, &ok);
    EXPECT_FALSE(ok);
    string.asUTF8(&ok);
    EXPECT_TRUE(ok);

    // A form that is known does not change when the locale does: it is not made again.
    EXPECT_STREQ(string.asMultibyte(Multibyte, &ok), "a?");
    qvTest::ScopedLocale const locale(qvTest::utf8Locale);
    EXPECT_STREQ(string.asMultibyte(Multibyte, &ok), "a?");
    EXPECT_FALSE(ok);
    EXPECT_STREQ(string.asMultibyte(), "a?");
    string.asUTF8(nullptr);
    EXPECT_STREQ(string.asMultibyte(Multibyte, nullptr), "a\xC3\xA9");
    ok = false;
    EXPECT_STREQ(string.asMultibyte(Multibyte, &ok), "a\xC3\xA9");
    EXPECT_TRUE(ok);

    IString const empty;
    ok = false;
    EXPECT_STREQ(empty.asUTF8(&ok), "");
    EXPECT_TRUE(ok);
    IString const zero(L"\0a", 2);
    EXPECT_STREQ(zero.asUTF8(&ok), "");
    EXPECT_FALSE(ok);
    std::u16string const units(3000, u'\x20AC');
    std::string bytes;
    for (int i = 0; i < 3000; ++i)
        bytes += "\xE2\x82\xAC";
    EXPECT_EQ(IString(units).asUTF8(), bytes);
    EXPECT_EQ(IString(units).asMultibyte(), bytes);
}

TEST(IString, APartGoesIntoAnotherString) {
    IString out(L"old");
    IString(L"ab\0cde", 6).substr(out, 3, 2);
    EXPECT_EQ(out, u"cd");
}

TEST(IString, ReplacesAllWithoutLookingAtWhatItPutIn) {
    auto const replaced = [](wchar_t const * text, wchar_t const * what, wchar_t const * with) {
        return IString(text).replace(IString(what), IString(with));
    };
    EXPECT_EQ(replaced(L"aXa", L"a", L"aa"), u"aaXaa");
    EXPECT_EQ(replaced(L"aaaa", L"aa", L"a"), u"aa");
    EXPECT_EQ(replaced(L"abc", L"", L"x"), u"abc");
    EXPECT_EQ(replaced(L"abc", L"abc", L""), u"");
    EXPECT_EQ(replaced(L"", L"a", L"x"), u"");
    EXPECT_EQ(replaced(L"xaya", L"a", L"-"), u"x-y-");
    IString self(L"ab");
    EXPECT_EQ(self.replace(self, self), u"ab");
    EXPECT_EQ(self.replace(IString(L"b"), self), u"aab");
}

TEST(IString, CollatesByTheLocaleAndElseByCode) {
    EXPECT_LT(IString(L"a\x0416").collate(L"a\x0436"), 0);
    EXPECT_EQ(IString(L"a\0b", 3).collate(L"a"), 0);
    EXPECT_EQ(IString(L"AbC").compareNoCase(L"aBc"), 0);
    EXPECT_LT(IString(L"aB").collateNoCase(L"AC"), 0);
    qvTest::ScopedLocale const locale(qvTest::utf8Locale);
    EXPECT_LT(IString(L"\xFFFD").collate(IString(L"\xD83D\xDE00")), 0) << "by code point, not by unit";
    EXPECT_NE(IString(L"\xD800").collate(L"?"), 0) << "what has no narrow form is told apart";
    EXPECT_EQ(IString(L"\x0416").compareNoCase(L"\x0436"), 0);
}

TEST(Strings, HashAllOfTheirTextAsBytes) {
    std::string const bytes("ab\0cd", 5);
    unsigned const expected = qv::hashfunction(bytes.data(), bytes.data() + bytes.size());
    CString const narrow(bytes);
    EXPECT_EQ(hashfunction(narrow), expected);
    EXPECT_EQ(std::hash<CString>()(narrow), expected);
    EXPECT_EQ(hashfunction(CString()), 0U);
    // The units a, b and so on are pairs of bytes.
    std::string const pairs("a\0b\0\0\0c\0d\0", 10);
    IString const wide(L"ab\0cd", 5);
    EXPECT_EQ(hashfunction(wide), qv::hashfunction(pairs.data(), pairs.data() + pairs.size()));
    EXPECT_EQ(std::hash<IString>()(wide), hashfunction(wide));
}

TEST(Strings, MixWithNarrowLiteralsAndEachOther) {
    EXPECT_EQ(CString("a") + "b" + CString('c'), "abc");
    EXPECT_EQ(IString(L"a") + "b" + CString("c") + L"d", u"abcd");
    EXPECT_EQ(IString(L"narrow"), "narrow");
    EXPECT_TRUE(CString("a") < "b" && CString("b") > std::string_view("a") && CString("a") != "b");
    EXPECT_TRUE(IString(L"a") < L"b" && IString(L"b") > std::u16string_view(u"a") && IString(L"a") != L"b");
    qvTest::ScopedLocale const locale(qvTest::utf8Locale);
    EXPECT_EQ(IString(eAcute), u"\x00E9");
}

} // namespace
} // namespace qvString
