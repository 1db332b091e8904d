// Both string classes against the standard strings, under random operations.

#include "Base/Strings/qvStringCharacters.h"
#include "Base/Strings/qvStringIString.h"

#include "RandomText.h"
#include "Support/StringPrinters.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

namespace qvString {
namespace {

struct Narrow {
    using String = CString;
    using Char = char;
    using Model = std::string;
    static char const * pointer(Model const & model) { return model.c_str(); }
    static Model contents(CString const & string) { return {string.asChar(), string.length()}; }
    static Model copied(Model const & model) { return model; }
};

struct Wide {
    using String = IString;
    using Char = wchar_t;
    using Model = std::u16string;
    static wchar_t const * pointer(Model const & model) { return reinterpret_cast<wchar_t const *>(model.c_str()); }
    static Model contents(IString const & string) { return Model(std::u16string_view(string)); }
    static Model copied(Model const & model) { return model.substr(0, model.find(u'\0')); }
};

bool isVowel(char c) { return c == 'a' || c == 'e'; }
bool isVowel(wchar_t c) { return c == L'a' || c == L'e'; }

int sign(int value) { return (value > 0) - (value < 0); }

template <class Kind>
class StringModel : public testing::Test {
protected:
    using String = typename Kind::String;
    using Model = typename Kind::Model;
    using Char = typename Kind::Char;
    using ModelChar = typename Model::value_type;

    // Short texts of few characters, so that searches hit; a zero now and then.
    Model randomText() {
        static constexpr char alphabet[] = {'a', 'b', 'e', ' ', 'A', '\t', '\0'};
        Model text;
        for (unsigned n = random.below(random.oneIn(8) ? 40 : 4); n-- != 0;)
            text += static_cast<ModelChar>(alphabet[random.oneIn(3) ? random.below(7) : random.below(3)]);
        return text;
    }
    static String stringOf(Model const & model) { return {Kind::pointer(model), static_cast<int>(model.size())}; }
    static Model terminated(Model const & model) { return model.substr(0, model.find(ModelChar())); }
    unsigned position() { return random.oneIn(10) ? String::npos : random.below(12); }
    static unsigned found(std::size_t at) { return static_cast<unsigned>(at); }

    // Does the same to both; either both throw, or neither.
    template <class OnString, class OnModel>
    void both(OnString onString, OnModel onModel) {
        Model changed = model;
        bool isInRange = true;
        try {
            onModel(changed);
        } catch (std::out_of_range const &) {
            isInRange = false;
        }
        if (isInRange) {
            onString(string);
            model = changed;
        } else
            EXPECT_THROW(onString(string), std::out_of_range);
    }

    void change();
    void search();
    void compare();
    void check() {
        ASSERT_EQ(Kind::contents(string), model);
        ASSERT_EQ(string.length(), model.size());
        ASSERT_EQ(string.isEmpty(), model.empty());
        ASSERT_EQ(string.isNull(), model.empty());
        ASSERT_EQ(string.first(), 0U);
        ASSERT_EQ(string.last(), model.empty() ? 0U : model.size() - 1);
        ASSERT_GE(string.capacity(), model.size());
        ASSERT_EQ(Kind::pointer(model)[model.size()], string.at(string.length()));
    }

    qvTest::Random random;
    String string;
    Model model;
};

template <class Kind>
void StringModel<Kind>::change() {
    Model const text = randomText();
    String const other = stringOf(text);
    Model const upToZero = terminated(text);
    Char const * const pointer = Kind::pointer(text);
    ModelChar const c = text.empty() ? ModelChar('e') : text[0];
    Char const character = static_cast<Char>(c);
    unsigned const pos = position();
    unsigned const n = position();
    auto const isSpaceChar = [](ModelChar d) { return d == ' ' || d == '\t'; };
    auto const isNot = [c](ModelChar d) { return d != c; };
    switch (random.below(22)) {
    case 0:
        return both([&](String & s) { s.append(other); }, [&](Model & m) { m += text; });
    case 1:
        return both([&](String & s) { s.append(pointer); }, [&](Model & m) { m += upToZero; });
    case 2:
        return both([&](String & s) { s += character; }, [&](Model & m) { m += c; });
    case 3:
        return both([&](String & s) { s.prepend(other); }, [&](Model & m) { m = text + m; });
    case 4:
        return both([&](String & s) { s.prepend(pointer).prepend(character); },
                    [&](Model & m) { m = c + (upToZero + m); });
    case 5:
        return both([&](String & s) { s.insert(pos, other); }, [&](Model & m) { m.insert(pos, text); });
    case 6:
        return both([&](String & s) { s.insert(pos, pointer); }, [&](Model & m) { m.insert(pos, upToZero); });
    case 7:
        return both([&](String & s) { s.insert(pos, character); }, [&](Model & m) { m.insert(pos, 1, c); });
    case 8:
        return both([&](String & s) { s.replace(pos, n, other); }, [&](Model & m) { m.replace(pos, n, text); });
    case 9:
        return both([&](String & s) { s.replace(pos, n, pointer); }, [&](Model & m) { m.replace(pos, n, upToZero); });
    case 10:
        return both([&](String & s) { s.replace(pos, n, character); }, [&](Model & m) { m.replace(pos, n, 1, c); });
    case 11:
        return both([&](String & s) { s.erase(pos, n); }, [&](Model & m) { m.empty() ? m : m.erase(pos, n); });
    case 12:
        return both([&](String & s) { s.remove(pos, n).append(other); },
                    [&](Model & m) { (m.empty() ? m : m.erase(pos, n)) += text; });
    case 13:
        return both([&](String & s) { s.strip(character); },
                    [&](Model & m) { m.erase(m.begin(), std::find_if(m.begin(), m.end(), isNot)); });
    case 14:
        return both([&](String & s) { s.rstrip(character); },
                    [&](Model & m) { m.erase(std::find_if(m.rbegin(), m.rend(), isNot).base(), m.end()); });
    case 15:
        return both([&](String & s) { s.stripSpaces(); },
                    [&](Model & m) { m.erase(m.begin(), std::find_if_not(m.begin(), m.end(), isSpaceChar)); });
    case 16:
        return both([&](String & s) { s.rstripSpaces(); },
                    [&](Model & m) { m.erase(std::find_if_not(m.rbegin(), m.rend(), isSpaceChar).base(), m.end()); });
    case 17:
        return both([&](String & s) { s.toUpperCase(); },
                    [](Model & m) {
                        for (auto & d : m)
                            d = d >= 'a' && d <= 'z' ? static_cast<ModelChar>(d - 32) : d;
                    });
    case 18:
        return both([&](String & s) { s.toLowerCase(); },
                    [](Model & m) {
                        for (auto & d : m)
                            d = d >= 'A' && d <= 'Z' ? static_cast<ModelChar>(d + 32) : d;
                    });
    case 19:
        // The string itself as what is put into it.
        return both([&](String & s) { s.insert(s.length() / 2, s).append(s.length() < 40 ? s : other); },
                    [&](Model & m) {
                        m.insert(m.size() / 2, Model(m));
                        m += m.size() < 40 ? Model(m) : text;
                    });
    case 20:
        if (!model.empty()) {
            string[string.last()] = character;
            string.at(0) = character;
            model.back() = model.front() = c;
        }
        return;
    default:
        // Shortens what has grown.
        return both([&](String & s) { s = other; }, [&](Model & m) { m = text; });
    }
}

template <class Kind>
void StringModel<Kind>::search() {
    Model const text = randomText();
    String const other = stringOf(text);
    Char const * const pointer = Kind::pointer(text);
    unsigned const pos = position();
    auto const expected = [&](Model const & what, std::size_t at) {
        return what.empty() || model.empty() ? String::npos : found(at);
    };
    Model const upToZero = terminated(text);
    ASSERT_EQ(string.find(other, pos), expected(text, model.find(text, pos)));
    ASSERT_EQ(string.rfind(other, pos), expected(text, model.rfind(text, pos)));
    ASSERT_EQ(string.find(pointer, pos), expected(upToZero, model.find(upToZero, pos)));
    ASSERT_EQ(string.rfind(pointer, pos), expected(upToZero, model.rfind(upToZero, pos)));
    ASSERT_EQ(string.find(static_cast<Char>('b'), pos), found(model.find('b', pos)));
    ASSERT_EQ(string.rfind(static_cast<Char>('b'), pos), found(model.rfind('b', pos)));
    ModelChar const vowels[] = {'a', 'e', 0};
    ASSERT_EQ(string.find(isVowel, pos), found(model.find_first_of(vowels, pos)));
    ASSERT_EQ(string.rfind(isVowel, pos), found(model.find_last_of(vowels, pos)));
    if constexpr (sizeof(Char) == 2) {
        ASSERT_EQ(string.findAny(other, pos), expected(text, model.find_first_of(text, pos)));
        ASSERT_EQ(string.rfindAny(other, pos), expected(text, model.find_last_of(text, pos)));
    }
    if (pos <= model.size())
        ASSERT_EQ(Kind::contents(string.substr(pos, 3)), Kind::copied(model.substr(pos, 3)));
    else
        ASSERT_THROW(string.substr(pos, 3), std::out_of_range);
}

template <class Kind>
void StringModel<Kind>::compare() {
    Model const text = random.oneIn(4) ? model : randomText();
    String const other = stringOf(text);
    int const order = sign(model.compare(text));
    ASSERT_EQ(sign(string.compare(other)), order);
    ASSERT_EQ(sign(string.compare(Kind::pointer(text))), sign(model.compare(terminated(text))));
    ASSERT_EQ(equal(string, other), order == 0);
    ASSERT_EQ(notEqual(string, other), order != 0);
    ASSERT_EQ(less(string, other), order < 0);
    ASSERT_EQ(greater(string, other), order > 0);
    ASSERT_EQ(lessEqual(string, other), order <= 0);
    ASSERT_EQ(greaterEqual(string, other), order >= 0);
    ASSERT_EQ(string == other, order == 0);
    ASSERT_EQ(string < other, order < 0);
    ASSERT_EQ(sign(string.collate(other)), sign(terminated(model).compare(terminated(text))));
    ASSERT_EQ(Kind::contents(plus(string, other)), model + text);
    String copy(string);
    ASSERT_EQ(Kind::contents(copy), Kind::copied(model));
    copy.assign(string);
    ASSERT_EQ(Kind::contents(copy), model);
    plusEqual(copy, other);
    ASSERT_EQ(Kind::contents(copy), model + text);
    String taken(std::move(copy));
    ASSERT_EQ(Kind::contents(taken), model + text);
    ASSERT_TRUE(copy.isEmpty());
    swap(taken, copy);
    ASSERT_EQ(Kind::contents(copy), model + text);
    ASSERT_TRUE(taken.isEmpty());
}

using Kinds = testing::Types<Narrow, Wide>;
TYPED_TEST_SUITE(StringModel, Kinds);

TYPED_TEST(StringModel, RandomOperationsGiveWhatTheStandardStringGives) {
    for (int step = 0; step < 30000; ++step) {
        SCOPED_TRACE(step);
        this->change();
        this->check();
        this->search();
        this->compare();
        if (this->HasFailure())
            return;
    }
}

} // namespace
} // namespace qvString
