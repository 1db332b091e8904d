#include "Base/DataFiles/Internal/ioNumberText.h"
#include "DataFiles/PacketFileSupport.h"
#include "Support/SeededRandom.h"

#include <gtest/gtest.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>

using namespace qvTest;

namespace {

template <typename T>
std::string written(char * (*write)(char *, T), T value) {
    char text[ioNumberText::maxLength];
    return std::string(text, write(text, value));
}

std::string printed(char const * format, double value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

bool same(double a, double b) { return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b); }

} // namespace

// The C library is the model, in the locale in which the tests run: the C locale.
TEST(NumberText, WritesAndReadsWhatTheCLibraryDoes) {
    std::mt19937_64 random(3);
    std::vector<double> values = {0.0, -0.0, 1e23, 5e-324, 1.7976931348623157e308, INFINITY, -INFINITY, 0.1, 123456789};
    for (int i = 0; i < 20000; ++i) {
        values.push_back(std::bit_cast<double>(random()));
        values.push_back(static_cast<double>(static_cast<std::int64_t>(random() >> (random() % 64))) / 1000);
    }
    for (double const value : values) {
        std::string const text = written(ioNumberText::writeDouble, value);
        ASSERT_EQ(printed("%.16g", value), text);
        auto const asFloat = static_cast<float>(value);
        ASSERT_EQ(printed("%.7g", static_cast<double>(asFloat)), written(ioNumberText::writeFloat, asFloat));
        char const * next = nullptr;
        double const read = ioNumberText::parseDouble(text.data(), text.data() + text.size(), &next);
        ASSERT_EQ(text.data() + text.size(), next);
        ASSERT_TRUE(std::isnan(value) ? std::isnan(read) : same(std::strtod(text.c_str(), nullptr), read)) << text;
    }
    EXPECT_EQ("1e-05", written(ioNumberText::writeFloat, 1e-5f));
    EXPECT_EQ("-inf", written(ioNumberText::writeDouble, -std::numeric_limits<double>::infinity()));
    EXPECT_EQ("nan", written(ioNumberText::writeDouble, std::numeric_limits<double>::quiet_NaN()));
}

TEST(NumberText, TakesWhatStrtodTakesOfAnyText) {
    std::string const pieces[] = {" ", "\t\n\v\f\r", "+", "-",   ".",        "e",   "E",   "0",
                                  "7", "12",         ",", "p",   "0x",       "X",   "inf", "INFINITY",
                                  "g", "nan",        "3", "400", "99999999", "308", "1e",  "2147483648"};
    SeededRandom random;
    for (int round = 0; round < 100000; ++round) {
        std::string made;
        for (int n = random.below(7); n > 0; --n) {
            made += pieces[random.below(static_cast<int>(std::size(pieces)))];
        }
        char const * const text = made.c_str();
        char * wanted = nullptr;
        double const value = std::strtod(text, &wanted);
        char const * next = nullptr;
        double const read = ioNumberText::parseDouble(text, text + std::strlen(text), &next);
        ASSERT_TRUE(std::isnan(value) ? std::isnan(read) : same(value, read)) << text << " read as " << read;
        ASSERT_EQ(wanted - text, next - text) << text;
    }
    // Up to the end that is given, never further.
    EXPECT_EQ(12, ioNumberText::parseInt("123", &"123"[2]));
    EXPECT_EQ(1.5, ioNumberText::parseDouble("1.57", &"1.57"[3]));
}

TEST(NumberText, ClampsIntegersTo32And64Bits) {
    auto const all = [](std::string const & text) {
        char const * const begin = text.data();
        char const * const end = begin + text.size();
        return std::tuple(ioNumberText::parseInt(begin, end), ioNumberText::parseUInt(begin, end),
                          ioNumberText::parseInt64(begin, end), ioNumberText::parseUInt64(begin, end));
    };
    std::int64_t const min64 = std::numeric_limits<std::int64_t>::min();
    std::int64_t const max64 = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(std::tuple(0, 0u, 0, 0u), all("x"));
    EXPECT_EQ(std::tuple(-1, 0xffffffffu, -1, ~0ull), all("-1"));
    EXPECT_EQ(std::tuple(5, 5u, 5, 5u), all("+5abc"));
    EXPECT_EQ(std::tuple(2147483647, 2147483648u, 2147483648, 2147483648u), all("2147483648"));
    EXPECT_EQ(std::tuple(-2147483647 - 1, 2147483648u, -2147483648, ~2147483647ull), all("-2147483648"));
    EXPECT_EQ(std::tuple(2147483647, 0xffffffffu, 4294967296, 4294967296u), all("4294967296"));
    EXPECT_EQ(std::tuple(2147483647, 0xffffffffu, max64, ~0ull), all("99999999999999999999"));
    EXPECT_EQ(std::tuple(-2147483647 - 1, 0xffffffffu, min64, ~0ull), all("-99999999999999999999"));
    for (char const * text : {"18446744073709551615", "18446744073709551616", "-18446744073709551615",
                              "9223372036854775808", "-9223372036854775808", "-9223372036854775809"}) {
        char const * const end = text + std::strlen(text);
        EXPECT_EQ(std::strtoull(text, nullptr, 10), ioNumberText::parseUInt64(text, end)) << text;
        EXPECT_EQ(std::strtoll(text, nullptr, 10), ioNumberText::parseInt64(text, end)) << text;
    }
}

// A program in a country with a decimal comma writes and reads the same bytes.
TEST(PacketFileLocale, DecimalCommasChangeNothing) {
    auto const write = [](Form form) {
        return writePacket(form, [](ioWriteContext & to) {
            to.writeDouble(1234567.25);
            to.writeFloat(-0.5f);
            to.writeInt(1234567);
        });
    };
    std::string const ascii = write(Form::ascii);
    EXPECT_NE(std::string::npos, ascii.find("{ 2 0 1234567.25 -0.5 1234567 }\n"));

    ASSERT_EQ(0, setenv("LOCPATH", QV_TEST_LOCALES, 1));
    ASSERT_NE(nullptr, std::setlocale(LC_ALL, "de_DE.UTF-8"));
    EXPECT_EQ("0,5", printed("%g", 0.5));
    EXPECT_EQ(ascii, write(Form::ascii));
    for (Form const form : allForms) {
        double number = 0;
        float fraction = 0;
        Reader reader(write(form), [&](ioReadContext & from) {
            from.readDouble(number);
            from.readFloat(fraction);
            EXPECT_EQ(1234567, from.readInt());
        });
        EXPECT_EQ(ioGood, reader.read());
        EXPECT_EQ(1234567.25, number);
        EXPECT_EQ(-0.5f, fraction);
    }
    std::setlocale(LC_ALL, "C");
}
