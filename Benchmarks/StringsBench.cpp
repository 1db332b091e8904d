// Conversions beside ICU, formatting beside snprintf, and the small operations beside the standard string.

#include "Base/Strings/qvStringEncoding.h"
#include "Base/Strings/qvStringFormat.h"
#include "Base/Strings/qvStringIString.h"

#include <benchmark/benchmark.h>
#ifdef QV_BENCH_ICU
#include <unicode/ustring.h>
#endif

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

namespace {

using qvString::CString;
using qvString::IString;

constexpr std::size_t textSize = 1 << 20;

void require(bool condition, char const * what) {
    if (!condition) {
        std::fprintf(stderr, "StringsBench: %s\n", what);
        std::abort();
    }
}

// ---- texts

void appendUtf8(std::string & text, unsigned c) {
    wchar_t const units[] = {static_cast<wchar_t>(c < 0x10000 ? c : 0xD7C0 + (c >> 10)),
                             static_cast<wchar_t>(0xDC00 + (c & 0x3FF))};
    char bytes[8];
    unsigned const size = qvString::WCStoUTF8(units, c < 0x10000 ? 1 : 2, bytes, sizeof bytes, nullptr);
    text.append(bytes, size);
}

// Words of random letters, with a blank behind each and now and then a comma.
std::string words(unsigned first, unsigned last, unsigned longest, char const * gap) {
    std::mt19937 random(first);
    std::string text;
    while (text.size() < textSize) {
        for (unsigned n = 1 + static_cast<unsigned>(random()) % longest; n-- != 0;)
            appendUtf8(text, first + static_cast<unsigned>(random()) % (last - first + 1));
        text += random() % 12 == 0 ? std::string(",") + gap : gap;
    }
    return text;
}

struct Sample {
    char const * name;
    std::string text;
};

Sample const & sample(int which) {
    static Sample const samples[] = {
        {"ASCII", words('a', 'z', 11, " ")},
        {"Cyrillic", words(0x430, 0x44F, 11, " ")},
        {"CJK", words(0x4E00, 0x9FA5, 24, "\xE3\x80\x82")},
        {"emoji", words(0x1F600, 0x1F64F, 8, " ")},
    };
    return samples[which];
}
constexpr int sampleCount = 4;

// ---- conversions

void convertQv(benchmark::State & state, std::string const & text) {
    std::u16string units(text.size(), u'\0');
    wchar_t * const wide = reinterpret_cast<wchar_t *>(units.data());
    unsigned const size = static_cast<unsigned>(text.size());
    for (auto _ : state)
        benchmark::DoNotOptimize(qvString::UTF8toWCS(text.data(), size, wide, size, true, nullptr));
}

void convertBackQv(benchmark::State & state, std::string const & text) {
    IString const wide(text.c_str(), qvString::UTF8);
    std::string bytes(3 * wide.length(), '\0');
    for (auto _ : state)
        benchmark::DoNotOptimize(qvString::WCStoUTF8(wide.asWChar(), wide.length(), bytes.data(),
                                                     static_cast<unsigned>(bytes.size()), nullptr));
}

#ifdef QV_BENCH_ICU

std::u16string icuUnits(std::string const & text) {
    std::u16string units(text.size(), u'\0');
    UErrorCode error = U_ZERO_ERROR;
    int32_t length = 0;
    int32_t const size = static_cast<int32_t>(text.size());
    u_strFromUTF8(units.data(), size, &length, text.data(), size, &error);
    require(U_SUCCESS(error) != 0, "ICU converts the sample");
    units.resize(static_cast<std::size_t>(length));
    return units;
}

void convertIcu(benchmark::State & state, std::string const & text) {
    std::u16string units(text.size(), u'\0');
    int32_t const size = static_cast<int32_t>(text.size());
    for (auto _ : state) {
        UErrorCode error = U_ZERO_ERROR;
        int32_t length = 0;
        benchmark::DoNotOptimize(u_strFromUTF8(units.data(), size, &length, text.data(), size, &error));
    }
}

void convertBackIcu(benchmark::State & state, std::string const & text) {
    std::u16string const units = icuUnits(text);
    std::string bytes(3 * units.size(), '\0');
    for (auto _ : state) {
        UErrorCode error = U_ZERO_ERROR;
        int32_t length = 0;
        benchmark::DoNotOptimize(u_strToUTF8(bytes.data(), static_cast<int32_t>(bytes.size()), &length, units.data(),
                                             static_cast<int32_t>(units.size()), &error));
    }
}

#endif

void checkConversions() {
    for (int i = 0; i < sampleCount; ++i) {
        std::string const & text = sample(i).text;
        bool ok = false;
        IString const wide(text.c_str(), qvString::UTF8, &ok);
        require(ok && text == wide.asUTF8(), "samples convert to and fro");
#ifdef QV_BENCH_ICU
        require(wide == icuUnits(text), "ICU and ours give the same units");
#endif
    }
}

// ---- formatting: a record of the kind that logs and messages are made of

constexpr char const * recordFormat = "%s: %d of %u bytes at 0x%08x, %-12s|%5d|%.3f s\n";
constexpr wchar_t const * wideRecordFormat = L"%s: %d of %u bytes at 0x%08x, %-12s|%5d|%.3f s\n";
constexpr char const * textFormat = "%s: %d of %u bytes at 0x%08x, %-12s|%5d\n";
constexpr wchar_t const * wideTextFormat = L"%s: %d of %u bytes at 0x%08x, %-12s|%5d\n";

#define QV_RECORD "renderer", i, 1048576U, 0xBEEFU + static_cast<unsigned>(i), "texture", i % 1000

std::size_t printfRecord(char * buffer, std::size_t size, int i) {
    return static_cast<std::size_t>(std::snprintf(buffer, size, recordFormat, QV_RECORD, i * 0.25));
}
std::size_t printfText(char * buffer, std::size_t size, int i) {
    return static_cast<std::size_t>(std::snprintf(buffer, size, textFormat, QV_RECORD));
}

// A string that is kept, and one for each record, as snprintf is commonly put into a std::string.
template <class Print>
void formatStandard(benchmark::State & state, Print print) {
    int i = 0;
    for (auto _ : state) {
        char buffer[256];
        benchmark::DoNotOptimize(print(buffer, sizeof buffer, ++i));
        benchmark::DoNotOptimize(buffer);
    }
}

template <class String, class Char>
void formatRecordQv(benchmark::State & state, Char const * format) {
    String text;
    int i = 0;
    for (auto _ : state) {
        ++i;
        benchmark::DoNotOptimize(text.format(format, QV_RECORD, i * 0.25));
    }
}
template <class String, class Char>
void formatTextQv(benchmark::State & state, Char const * format) {
    String text;
    int i = 0;
    for (auto _ : state) {
        ++i;
        benchmark::DoNotOptimize(text.format(format, QV_RECORD));
    }
}

void checkFormatting() {
    for (int i = 1; i < 3000; i += 7) {
        char record[256];
        char plain[256];
        printfRecord(record, sizeof record, i);
        printfText(plain, sizeof plain, i);
        CString narrow;
        narrow.format(recordFormat, QV_RECORD, i * 0.25);
        require(narrow == record, "CString formats the record");
        narrow.format(textFormat, QV_RECORD);
        require(narrow == plain, "CString formats the text");
        IString wide;
        wide.format(wideRecordFormat, QV_RECORD, i * 0.25);
        require(wide == record, "IString formats the record");
        wide.format(recordFormat, QV_RECORD, i * 0.25);
        require(wide == record, "IString formats the record from a narrow format");
        wide.format(wideTextFormat, QV_RECORD);
        require(wide == plain, "IString formats the text");
    }
}

// ---- small operations

template <class String>
void append(benchmark::State & state, String const & piece) {
    for (auto _ : state) {
        String text;
        for (int i = 0; i < 1000; ++i)
            text.append(piece);
        benchmark::DoNotOptimize(text);
    }
}

template <class String>
void find(benchmark::State & state, String const & text, String const & needle) {
    for (auto _ : state)
        benchmark::DoNotOptimize(text.find(needle, 0));
}

void narrowAgain(benchmark::State & state) {
    IString const name(L"/usr/share/\x0444\x0430\x0439\x043B.txt");
    for (auto _ : state)
        benchmark::DoNotOptimize(name.asUTF8());
}

template <class Function>
void add(std::string const & name, Function function) {
    benchmark::RegisterBenchmark(name.c_str(), function);
}

void registerAll() {
    for (int i = 0; i < sampleCount; ++i) {
        Sample const & one = sample(i);
        std::string const name = one.name;
        add("UTF-8 to UTF-16, 1 MiB|" + name + "|qv", [&one](benchmark::State & s) { convertQv(s, one.text); });
        add("UTF-16 to UTF-8, 1 MiB|" + name + "|qv", [&one](benchmark::State & s) { convertBackQv(s, one.text); });
#ifdef QV_BENCH_ICU
        add("UTF-8 to UTF-16, 1 MiB|" + name + "|ICU", [&one](benchmark::State & s) { convertIcu(s, one.text); });
        add("UTF-16 to UTF-8, 1 MiB|" + name + "|ICU", [&one](benchmark::State & s) { convertBackIcu(s, one.text); });
#endif
    }

    for (char const * row : {"CString::format|", "IString::format|", "IString::format, narrow format|"}) {
        add(row + std::string("record|snprintf"), [](benchmark::State & s) { formatStandard(s, printfRecord); });
        add(row + std::string("no floating point|snprintf"),
            [](benchmark::State & s) { formatStandard(s, printfText); });
    }
    add("CString::format|record|qv", [](benchmark::State & s) { formatRecordQv<CString>(s, recordFormat); });
    add("CString::format|no floating point|qv", [](benchmark::State & s) { formatTextQv<CString>(s, textFormat); });
    add("IString::format|record|qv", [](benchmark::State & s) { formatRecordQv<IString>(s, wideRecordFormat); });
    add("IString::format|no floating point|qv", [](benchmark::State & s) { formatTextQv<IString>(s, wideTextFormat); });
    add("IString::format, narrow format|record|qv",
        [](benchmark::State & s) { formatRecordQv<IString>(s, recordFormat); });
    add("IString::format, narrow format|no floating point|qv",
        [](benchmark::State & s) { formatTextQv<IString>(s, textFormat); });

    add("append 1000 pieces|CString|qv", [](benchmark::State & s) { append<CString>(s, "piece of text"); });
    add("append 1000 pieces|CString|std::string",
        [](benchmark::State & s) { append<std::string>(s, "piece of text"); });
    add("append 1000 pieces|IString|qv", [](benchmark::State & s) { append<IString>(s, IString(L"piece of text")); });
    add("append 1000 pieces|IString|std::u16string",
        [](benchmark::State & s) { append<std::u16string>(s, u"piece of text"); });

    std::string const hay = sample(0).text.substr(0, 100000) + "0needle";
    add("find at the end of 100 kB|CString|qv",
        [text = CString(hay)](benchmark::State & s) { find<CString>(s, text, "0needle"); });
    add("find at the end of 100 kB|CString|std::string",
        [hay](benchmark::State & s) { find<std::string>(s, hay, "0needle"); });
    add("find at the end of 100 kB|IString|qv",
        [text = IString(hay)](benchmark::State & s) { find<IString>(s, text, IString(L"0needle")); });
    add("find at the end of 100 kB|IString|std::u16string",
        [text = std::u16string(IString(hay))](benchmark::State & s) { find<std::u16string>(s, text, u"0needle"); });
    add("asUTF8 again|file name|qv", narrowAgain);
}

} // namespace

int main(int argc, char ** argv) {
    checkConversions();
    checkFormatting();
#ifndef QV_BENCH_ICU
    std::puts("ICU was not found: its rows are left out.");
#endif
    registerAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
