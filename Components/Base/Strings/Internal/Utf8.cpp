#include "Base/Strings/Internal/Utf8.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace qvString::utf8 {

namespace {

// Runs of one kind of character are converted in blocks without a branch per character: at the ends of words a
// processor guesses wrong, and that costs more than the conversion itself. The blocks are vectors in the sense of the
// compilers, which have them for every machine. Bytes and units that are looked at together are little-endian numbers.
static_assert(std::endian::native == std::endian::little);

using Bytes = std::uint8_t __attribute__((vector_size(16)));
using SignedBytes = std::int8_t __attribute__((vector_size(16)));
using Units = std::uint16_t __attribute__((vector_size(16)));
using SignedUnits = std::int16_t __attribute__((vector_size(16)));
using Words = std::uint32_t __attribute__((vector_size(16)));
using SignedWords = std::int32_t __attribute__((vector_size(16)));
using Halves = std::uint64_t __attribute__((vector_size(16)));

template <class Value>
Value load(void const * from) {
    Value value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

template <class Value>
void store(void * to, Value value) {
    std::memcpy(to, &value, sizeof value);
}

bool isZero(Halves lanes) { return (lanes[0] | lanes[1]) == 0; }

unsigned byteAt(char const * text) { return static_cast<unsigned char>(*text); }

// The bounds of the second byte, which is where overlong forms, surrogates and what lies beyond U+10FFFF are told
// apart.
struct SecondByte {
    unsigned least;
    unsigned most;
};
SecondByte secondByteOf(unsigned lead) {
    switch (lead) {
    case 0xE0:
        return {0xA0, 0xBF};
    case 0xED:
        return {0x80, 0x9F};
    case 0xF0:
        return {0x90, 0xBF};
    case 0xF4:
        return {0x80, 0x8F};
    default:
        return {0x80, 0xBF};
    }
}

// What has been taken of a text and put into another.
template <class From, class To>
struct Progress {
    From const * at;
    From const * end;
    To * out;

    std::ptrdiff_t left() const { return end - at; }
};
using FromUtf8 = Progress<char, wchar_t>;
using FromUtf16 = Progress<wchar_t, char>;

// Bytes to units, the low and the high half of a vector.
Units widenLow(Bytes low) {
    return reinterpret_cast<Units>(
        __builtin_shufflevector(low, Bytes{}, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
}
Units widenHigh(Bytes high) {
    return reinterpret_cast<Units>(
        __builtin_shufflevector(high, Bytes{}, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31));
}
// The same for masks, which keep their sign.
Units widenMaskLow(Bytes mask) {
    return reinterpret_cast<Units>(__builtin_shufflevector(mask, mask, 0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7));
}
Units widenMaskHigh(Bytes mask) {
    return reinterpret_cast<Units>(
        __builtin_shufflevector(mask, mask, 8, 8, 9, 9, 10, 10, 11, 11, 12, 12, 13, 13, 14, 14, 15, 15));
}
// The low bytes of units below 256.
Bytes narrow(Units low, Units high) {
    return __builtin_shufflevector(reinterpret_cast<Bytes>(low), reinterpret_cast<Bytes>(high), 0, 2, 4, 6, 8, 10, 12,
                                   14, 16, 18, 20, 22, 24, 26, 28, 30);
}

// ---- from UTF-8

constexpr std::ptrdiff_t asciiBlock = 64;

bool takeAscii(FromUtf8 & run) {
    char const * const start = run.at;
    while (run.left() >= asciiBlock) {
        std::array<Bytes, 4> const bytes = {load<Bytes>(run.at), load<Bytes>(run.at + 16), load<Bytes>(run.at + 32),
                                            load<Bytes>(run.at + 48)};
        if (!isZero(reinterpret_cast<Halves>((bytes[0] | bytes[1] | bytes[2] | bytes[3]) & 0x80)))
            break;
        for (Bytes const & part : bytes) {
            store(run.out, widenLow(part));
            store(run.out + 8, widenHigh(part));
            run.out += 16;
        }
        run.at += asciiBlock;
    }
    return run.at != start;
}

// Puts the units of four pairs, each without those that `mask` strikes out, and gives where to go on. What is put
// behind the last one is overwritten by the next.
wchar_t * putMarked(wchar_t * out, Units units, Units mask) {
    // A first unit that is struck out makes room for the second.
    Words const pairs = reinterpret_cast<Words>(units);
    Words const struck = reinterpret_cast<Words>(mask);
    Words const isFirst = reinterpret_cast<Words>(reinterpret_cast<SignedWords>(struck << 16) >> 16);
    Words const packed = (pairs & ~isFirst) | (pairs >> 16 & isFirst);
    Words const counts = 2 - (struck & 1) - (struck >> 31);
    for (int i = 0; i < 4; ++i) {
        store(out, packed[i]);
        out += counts[i];
    }
    return out;
}

// Takes characters of one and two bytes, sixteen bytes at a time. More than a block must be left, for the second byte
// of the last character, and for something to come that overwrites what is put behind the last unit.
bool takeShort(FromUtf8 & run) {
    char const * const start = run.at;
    while (run.left() > 17) {
        Bytes const bytes = load<Bytes>(run.at);
        SignedBytes const values = reinterpret_cast<SignedBytes>(bytes);
        Bytes const next = load<Bytes>(run.at + 1);
        Bytes const isTrail = reinterpret_cast<Bytes>(values < -64);
        Bytes const isLead = reinterpret_cast<Bytes>((values > -63) & (values < -32));
        Bytes const isTrailNext = reinterpret_cast<Bytes>(reinterpret_cast<SignedBytes>(next) < -64);
        Bytes const isKnown = reinterpret_cast<Bytes>(values >= 0) | isTrail | isLead;
        if (!isZero(reinterpret_cast<Halves>(~isKnown | (isLead ^ isTrailNext))) || isTrail[0] != 0)
            break;
        // A lead byte gives its unit together with the byte behind it, which gives none.
        Bytes const leadBits = bytes & (~isLead | 0x1F);
        auto const unitsOf = [](Units lead, Units trail, Units mask) {
            return (lead & ~mask) | ((lead << 6 | (trail & 0x3F)) & mask);
        };
        Units const low = unitsOf(widenLow(leadBits), widenLow(next), widenMaskLow(isLead));
        Units const high = unitsOf(widenHigh(leadBits), widenHigh(next), widenMaskHigh(isLead));
        run.out = putMarked(run.out, low, widenMaskLow(isTrail));
        run.out = putMarked(run.out, high, widenMaskHigh(isTrail));
        run.at += isLead[15] != 0 ? 17 : 16;
        if (isZero(reinterpret_cast<Halves>(isLead)))
            break; // plain ASCII is faster elsewhere
    }
    return run.at != start;
}

// Whether a single ASCII character, such as a blank between words, stands where a run of longer ones stopped: it is
// taken too when another of them may follow.
bool takeSeparator(FromUtf8 & run, std::uint32_t bytes) {
    if ((bytes & 0x80) != 0)
        return false;
    *run.out++ = static_cast<wchar_t>(bytes & 0x7F);
    ++run.at;
    return (bytes & 0x8000) != 0;
}

bool takeThreeBytes(FromUtf8 & run) {
    char const * const start = run.at;
    while (run.left() >= 4) {
        std::uint32_t const bytes = load<std::uint32_t>(run.at);
        if ((bytes & 0x00C0C0F0) != 0x008080E0) {
            if (takeSeparator(run, bytes))
                continue;
            break;
        }
        std::uint32_t const value = (bytes << 12 & 0xF000) | (bytes >> 2 & 0x0FC0) | (bytes >> 16 & 0x003F);
        if (value < 0x800 || (value & 0xF800) == 0xD800)
            break;
        *run.out++ = static_cast<wchar_t>(value);
        run.at += 3;
    }
    return run.at != start;
}

bool takeFourBytes(FromUtf8 & run) {
    char const * const start = run.at;
    while (run.left() >= 4) {
        std::uint32_t const bytes = load<std::uint32_t>(run.at);
        if ((bytes & 0xC0C0C0F8) != 0x808080F0) {
            if (takeSeparator(run, bytes))
                continue;
            break;
        }
        std::uint32_t const value =
            (bytes << 18 & 0x1C0000) | (bytes << 4 & 0x3F000) | (bytes >> 10 & 0xFC0) | (bytes >> 24 & 0x3F);
        if (value < 0x10000 || value > 0x10FFFF)
            break;
        run.out += toUnits(value, run.out);
        run.at += 4;
    }
    return run.at != start;
}

bool takeRun(FromUtf8 & run) {
    unsigned const lead = byteAt(run.at);
    if (lead >= 0xE0)
        return lead < 0xF0 ? takeThreeBytes(run) : takeFourBytes(run);
    if ((lead < 0x80 && takeAscii(run)) || takeShort(run))
        return true;
    // A few characters between longer ones.
    char const * const start = run.at;
    while (run.at != run.end && byteAt(run.at) < 0x80)
        *run.out++ = static_cast<wchar_t>(byteAt(run.at++));
    return run.at != start;
}

// ---- from UTF-16

bool takeAscii(FromUtf16 & run) {
    wchar_t const * const start = run.at;
    while (run.left() >= asciiBlock / 2) {
        std::array<Units, 4> const units = {load<Units>(run.at), load<Units>(run.at + 8), load<Units>(run.at + 16),
                                            load<Units>(run.at + 24)};
        if (!isZero(reinterpret_cast<Halves>((units[0] | units[1] | units[2] | units[3]) & 0xFF80)))
            break;
        store(run.out, narrow(units[0], units[1]));
        store(run.out + 16, narrow(units[2], units[3]));
        run.at += asciiBlock / 2;
        run.out += asciiBlock / 2;
    }
    return run.at != start;
}

// The bytes of eight units that have one or two each: characters below U+0800, and the halves of surrogate pairs, whose
// four bytes come from each half in part. `before` are the units in front of each.
Units bytesOf(Units units, Units before, Units isHigh, Units isLow, Units isAscii) {
    Units const two = 0x80C0 | units >> 6 | (units & 0x3F) << 8;
    Units const plane = (units & 0x3FF) + 0x40;
    Units const high = 0x80F0 | plane >> 8 | (plane << 6 & 0x3F00);
    Units const low = 0x8080 | (before & 3) << 4 | (units >> 6 & 0xF) | (units & 0x3F) << 8;
    Units const isTwo = ~(isHigh | isLow | isAscii);
    return (units & isAscii) | (two & isTwo) | (high & isHigh) | (low & isLow);
}

// Puts the bytes of eight units, of which those that `isOne` marks have one and the others two. As with putMarked(), a
// byte behind the last one may be written.
char * putBytes(char * out, Units bytes, Units isOne) {
    Words const pairs = reinterpret_cast<Words>(bytes);
    Words const ones = reinterpret_cast<Words>(isOne);
    Words const isFirstOne = reinterpret_cast<Words>(reinterpret_cast<SignedWords>(ones << 16) >> 16);
    Words const closed = (pairs & 0xFF) | (pairs >> 8 & 0xFFFF00);
    Words const packed = (pairs & ~isFirstOne) | (closed & isFirstOne);
    Words const counts = 4 - (ones & 1) - (ones >> 31);
    for (int i = 0; i < 4; ++i) {
        store(out, packed[i]);
        out += counts[i];
    }
    return out;
}

// Takes characters of one, two and four bytes, eight units at a time. More than a block must be left, for the second
// half of a last pair, and for something to come that overwrites what is put behind the last byte.
bool takeShort(FromUtf16 & run) {
    wchar_t const * const start = run.at;
    while (run.left() > 9) {
        Units const units = load<Units>(run.at);
        Units const next = load<Units>(run.at + 1);
        Units const before = __builtin_shufflevector(Units{}, units, 7, 8, 9, 10, 11, 12, 13, 14);
        Units const isHigh = reinterpret_cast<Units>((units & 0xFC00) == 0xD800);
        Units const isLow = reinterpret_cast<Units>((units & 0xFC00) == 0xDC00);
        Units const isLowNext = reinterpret_cast<Units>((next & 0xFC00) == 0xDC00);
        Units const isShort = reinterpret_cast<Units>((units & 0xF800) == 0);
        Units const isKnown = isShort | isHigh | isLow;
        if (!isZero(reinterpret_cast<Halves>(~isKnown | (isHigh ^ isLowNext))) || isLow[0] != 0)
            break;
        Units const isAscii = reinterpret_cast<Units>((units & 0xFF80) == 0);
        char * const out = putBytes(run.out, bytesOf(units, before, isHigh, isLow, isAscii), isAscii);
        // A pair that reaches beyond the block waits for the next one.
        std::ptrdiff_t const waits = isHigh[7] & 1;
        run.out = out - 2 * waits;
        run.at += 8 - waits;
        if (isZero(reinterpret_cast<Halves>(~isAscii)))
            break; // plain ASCII is faster elsewhere
    }
    return run.at != start;
}

// Takes characters of three bytes, four at a time. What is left behind them overwrites the two bytes that the
// last store writes too many.
bool takeThreeBytes(FromUtf16 & run) {
    wchar_t const * const start = run.at;
    while (run.left() > 5) {
        Units const units = reinterpret_cast<Units>(Halves{load<std::uint64_t>(run.at), 0});
        Words const values = reinterpret_cast<Words>(__builtin_shufflevector(units, Units{}, 0, 8, 1, 9, 2, 10, 3, 11));
        Words const isOther = reinterpret_cast<Words>((reinterpret_cast<SignedWords>(values) < 0x800)) |
                              reinterpret_cast<Words>((values & 0xF800) == 0xD800);
        if (!isZero(reinterpret_cast<Halves>(isOther)))
            break;
        Halves const bytes =
            reinterpret_cast<Halves>(0x008080E0 | values >> 12 | (values << 2 & 0x3F00) | (values << 16 & 0x3F0000));
        Halves const packed = (bytes & 0xFFFFFF) | bytes >> 32 << 24;
        store(run.out, packed[0]);
        store(run.out + 6, packed[1]);
        run.out += 12;
        run.at += 4;
    }
    return run.at != start;
}

bool takeRun(FromUtf16 & run) {
    wchar_t const first = *run.at;
    if (first >= 0x800 && !isSurrogate(first))
        return takeThreeBytes(run);
    if ((first < 0x80 && takeAscii(run)) || takeShort(run))
        return true;
    wchar_t const * const start = run.at;
    while (run.at != run.end && *run.at < 0x80)
        *run.out++ = static_cast<char>(*run.at++);
    return run.at != start;
}

} // namespace

Step decode(char const * text, char const * end) {
    unsigned const lead = byteAt(text);
    if (lead < 0x80)
        return {lead, 1, true};
    if (lead < 0xC2 || lead > 0xF4)
        return {replacement, 1, false};
    unsigned const size = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    std::ptrdiff_t const there = end - text;
    SecondByte const second = secondByteOf(lead);
    if (there < 2 || byteAt(text + 1) < second.least || byteAt(text + 1) > second.most)
        return {replacement, 1, false};
    char32_t value = (lead & (0x7FU >> size)) << 6 | (byteAt(text + 1) & 0x3F);
    for (unsigned i = 2; i < size; ++i) {
        if (there <= static_cast<std::ptrdiff_t>(i) || (byteAt(text + i) & 0xC0) != 0x80)
            return {replacement, i, false};
        value = value << 6 | (byteAt(text + i) & 0x3F);
    }
    return {value, size, true};
}

unsigned encode(char32_t value, char * bytes) {
    if (value < 0x80) {
        bytes[0] = static_cast<char>(value);
        return 1;
    }
    if (value < 0x800) {
        bytes[0] = static_cast<char>(0xC0 | value >> 6);
        bytes[1] = static_cast<char>(0x80 | (value & 0x3F));
        return 2;
    }
    if (value < 0x10000) {
        bytes[0] = static_cast<char>(0xE0 | value >> 12);
        bytes[1] = static_cast<char>(0x80 | (value >> 6 & 0x3F));
        bytes[2] = static_cast<char>(0x80 | (value & 0x3F));
        return 3;
    }
    bytes[0] = static_cast<char>(0xF0 | value >> 18);
    bytes[1] = static_cast<char>(0x80 | (value >> 12 & 0x3F));
    bytes[2] = static_cast<char>(0x80 | (value >> 6 & 0x3F));
    bytes[3] = static_cast<char>(0x80 | (value & 0x3F));
    return 4;
}

Converted utf16Length(char const * text, std::size_t length) {
    char const * const end = text + length;
    Converted result{0, true};
    while (text != end) {
        if (end - text >= 8 && (load<std::uint64_t>(text) & 0x8080808080808080U) == 0) {
            text += 8;
            result.count += 8;
            continue;
        }
        Step const step = decode(text, end);
        text += step.length;
        result.count += step.value < 0x10000 ? 1 : 2;
        result.isWellFormed &= step.isWellFormed;
    }
    return result;
}

Converted toUtf16(char const * text, std::size_t length, wchar_t * units) {
    FromUtf8 run{text, text + length, units};
    bool isWellFormed = true;
    while (run.at != run.end) {
        if (takeRun(run))
            continue;
        Step const step = decode(run.at, run.end);
        run.at += step.length;
        run.out += toUnits(step.value, run.out);
        isWellFormed &= step.isWellFormed;
    }
    return {static_cast<std::size_t>(run.out - units), isWellFormed};
}

std::size_t utf8Length(wchar_t const * units, std::size_t length) {
    // Each unit by itself: a surrogate that stands alone has three bytes, and each half of a pair two.
    std::size_t count = length;
    for (std::size_t i = 0; i < length; ++i) {
        count += units[i] >= 0x80 ? 1U : 0U;
        count += units[i] >= 0x800 ? 1U : 0U;
    }
    for (std::size_t i = 0; i + 1 < length; ++i)
        count -= isHighSurrogate(units[i]) && isLowSurrogate(units[i + 1]) ? 2U : 0U;
    return count;
}

std::size_t toUtf8(wchar_t const * units, std::size_t length, char * text) {
    FromUtf16 run{units, units + length, text};
    while (run.at != run.end) {
        if (takeRun(run))
            continue;
        WideStep const step = decodeUnits(run.at, run.end);
        run.at += step.length;
        run.out += encode((step.value & 0xFFFFF800) == 0xD800 ? replacement : step.value, run.out);
    }
    return static_cast<std::size_t>(run.out - text);
}

} // namespace qvString::utf8
