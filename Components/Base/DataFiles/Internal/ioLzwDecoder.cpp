#include "Base/DataFiles/Internal/ioLzwDecoder.h"

#include "Base/DataFiles/Internal/ioBuffer.h"
#include "Base/DataFiles/Internal/ioLittleEndian.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace {

constexpr int largestGroup = ioLzw::maxWidth;

// All eight codes of the group in 16 bytes, of which as many count as the width has bits.
void unpackGroup(unsigned char const * bytes, int bits, std::uint16_t (&codes)[ioLzw::codesInGroup]) {
    std::uint64_t const low = ioLittleEndian::load(bytes);
    std::uint64_t const high = ioLittleEndian::load(bytes + 8);
    int const split = 4 * bits;
    std::uint64_t const upper = split == 64 ? high : low >> split | high << (64 - split);
    std::uint64_t const mask = (std::uint64_t{1} << bits) - 1;
    for (int i = 0; i < 4; ++i) {
        codes[i] = static_cast<std::uint16_t>(low >> (i * bits) & mask);
        codes[i + 4] = static_cast<std::uint16_t>(upper >> (i * bits) & mask);
    }
}

} // namespace

std::unique_ptr<ioLzwDecoder> ioLzwDecoder::make() {
    return std::unique_ptr<ioLzwDecoder>(new (std::nothrow) ioLzwDecoder);
}

// Further strings are written before a code can stand for them.
ioLzwDecoder::ioLzwDecoder() {
    for (int code = 0; code < 256; ++code) {
        strings_[code] = {static_cast<std::uint64_t>(code), 0, 1};
    }
}

void ioLzwDecoder::readHeader(ioBuffer & source) {
    char header[ioLzw::headerSize];
    if (source.read(header, ioLzw::headerSize) != ioLzw::headerSize ||
        !std::equal(header, header + ioLzw::headerSize, ioLzw::header)) {
        state_ = State::refused;
    }
}

// --- codes

bool ioLzwDecoder::readGroup(ioBuffer & source) {
    unsigned char bytes[largestGroup] = {};
    int size = width_.bits;
    if (source.numAvailable() >= largestGroup) {
        std::memcpy(bytes, source.available(), largestGroup);
        source.consume(size);
    } else {
        size = source.read(reinterpret_cast<char *>(bytes), size);
    }
    unpackGroup(bytes, width_.bits, group_);
    groupPosition_ = 0;
    groupEnd_ = size * 8 / width_.bits;
    return groupEnd_ > 0;
}

int ioLzwDecoder::nextCode(ioBuffer & source) {
    if (groupPosition_ == groupEnd_ || nextFree_ > width_.largestCode || clearing_) {
        if (nextFree_ > width_.largestCode) {
            width_.grow();
        }
        if (clearing_) {
            width_ = ioLzw::Width();
            clearing_ = false;
        }
        if (!readGroup(source)) {
            state_ = State::cut;
            return noCode;
        }
    }
    return group_[groupPosition_++];
}

// The next code that stands for a string, or noCode with the state set.
int ioLzwDecoder::codeOfString(ioBuffer & source) {
    int code = nextCode(source);
    bool literal = oldCode_ == noCode;
    if (code == ioLzw::clearCode && !literal) {
        // One less than the encoder's: the literal that follows adds a string that no code stands for.
        nextFree_ = ioLzw::firstFreeCode - 1;
        clearing_ = true;
        literal = true;
        code = nextCode(source);
    }
    if (code == noCode) {
        return noCode;
    }
    if (code == ioLzw::endCode) {
        state_ = State::ended;
        return noCode;
    }
    if (code > (literal ? 255 : nextFree_)) {
        state_ = State::refused;
        return noCode;
    }
    return code;
}

void ioLzwDecoder::takeEnd(ioBuffer & source) {
    if (started_ && state_ == State::running && heldPosition_ == heldEnd_ && nextCode(source) == ioLzw::endCode) {
        state_ = State::ended;
    }
}

// --- strings

// The string of a code with one byte more.
ioLzwDecoder::String ioLzwDecoder::followed(String const & string, int code, char last) {
    int const used = string.length % pieceSize;
    auto const byte = std::uint64_t{static_cast<unsigned char>(last)} << (8 * used);
    auto const length = static_cast<std::uint16_t>(string.length + 1);
    return used == 0 ? String{byte, static_cast<std::uint16_t>(code), length}
                     : String{string.piece | byte, string.ancestor, length};
}

// Writes up to pieceSize - 1 bytes behind the string as well.
void ioLzwDecoder::expand(String const & string, char * to) const {
    String const * part = &string;
    char * at = to + (string.length - 1) / pieceSize * pieceSize;
    ioLittleEndian::store(part->piece, at);
    while (at != to) {
        part = &strings_[part->ancestor];
        at -= pieceSize;
        ioLittleEndian::store(part->piece, at);
    }
}

int ioLzwDecoder::drain(char * bytes, int count) {
    int const piece = std::min(count, heldEnd_ - heldPosition_);
    std::memcpy(bytes, held_ + heldPosition_, static_cast<std::size_t>(piece));
    heldPosition_ += piece;
    return piece;
}

// Takes codes as long as they are strings that are known and fit, and nothing else happens: the state is kept in
// registers, which bytes written anywhere would forbid for that of the object. Gives the number of bytes.
int ioLzwDecoder::decodeRun(char * bytes, int count, ioBuffer & source) {
    if (oldCode_ == noCode) {
        return 0;
    }
    int done = 0;
    int const room = count - pieceSize;
    int const largestCode = width_.largestCode;
    int next = nextFree_;
    int old = oldCode_;
    while (next <= largestCode) {
        if (groupPosition_ == groupEnd_ && (source.numAvailable() < largestGroup || !readGroup(source))) {
            break;
        }
        int const code = group_[groupPosition_];
        // Together, as nobody can predict on which side of the two a code lies.
        if ((code == ioLzw::clearCode) | (code == ioLzw::endCode) | (code >= next)) {
            break;
        }
        String const & string = strings_[code];
        if (room - done < string.length) {
            break;
        }
        expand(string, bytes + done);
        if (next < ioLzw::codeLimit) {
            strings_[next++] = followed(strings_[old], old, bytes[done]);
        }
        ++groupPosition_;
        old = code;
        done += string.length;
    }
    nextFree_ = next;
    oldCode_ = old;
    return done;
}

// Takes the next code, whatever it is. Its string is held where it does not fit.
int ioLzwDecoder::decodeOne(char * bytes, int count, ioBuffer & source) {
    int const code = codeOfString(source);
    if (code == noCode) {
        return 0;
    }
    // A code that is only about to get its string stands for the old string and its own first byte.
    bool const isNext = code == nextFree_;
    String const & string = strings_[isNext ? oldCode_ : code];
    int const length = string.length + (isNext ? 1 : 0);
    bool const fits = count >= length + pieceSize;
    char * const to = fits ? bytes : held_;
    expand(string, to);
    if (isNext) {
        to[length - 1] = to[0];
    }
    if (oldCode_ != noCode && nextFree_ < ioLzw::codeLimit) {
        strings_[nextFree_++] = followed(strings_[oldCode_], oldCode_, to[0]);
    }
    oldCode_ = code;
    if (fits) {
        return length;
    }
    heldPosition_ = 0;
    heldEnd_ = length;
    return drain(bytes, count);
}

int ioLzwDecoder::decode(char * bytes, int count, ioBuffer & source) {
    if (!started_) {
        started_ = true;
        readHeader(source);
    }
    int done = drain(bytes, count);
    while (done < count && state_ == State::running) {
        done += decodeRun(bytes + done, count - done, source);
        done += decodeOne(bytes + done, count - done, source);
    }
    return done;
}
