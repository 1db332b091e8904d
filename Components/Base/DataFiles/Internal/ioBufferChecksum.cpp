#include "Base/DataFiles/Internal/ioBufferChecksum.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int headerSize = 10;

void putBigEndian(std::uint32_t value, char * to) {
    for (int i = 0; i < 4; ++i) {
        to[i] = static_cast<char>(value >> (24 - 8 * i));
    }
}

std::uint32_t getBigEndian(char const * from) {
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) {
        value = value << 8 | static_cast<unsigned char>(from[i]);
    }
    return value;
}

// Adds the 16-bit words of the bytes to a one's-complement sum. Such a sum is the rest of a division by 65535, with
// 65535 itself for every multiple but 0, so words may be added four at a time and the carries folded at the end.
std::uint16_t onesComplementSum(std::uint16_t sum, char const * bytes, std::size_t count) {
    constexpr std::size_t mostAtOnce = std::size_t{1} << 20;
    std::uint64_t total = sum;
    while (count > 0) {
        std::size_t const piece = std::min(count, mostAtOnce);
        std::size_t const words = piece / sizeof(std::uint32_t);
        std::uint64_t part = 0;
        for (std::size_t i = 0; i < words; ++i) {
            std::uint32_t word = 0;
            std::memcpy(&word, bytes + i * sizeof word, sizeof word);
            part += word;
        }
        std::uint32_t last = 0;
        std::memcpy(&last, bytes + words * sizeof last, piece % sizeof last);
        part += last;
        total += (part & 0xFFFFFFFF) + (part >> 32);
        bytes += piece;
        count -= piece;
    }
    while (total > 0xFFFF) {
        total = (total & 0xFFFF) + (total >> 16);
    }
    return static_cast<std::uint16_t>(total);
}

} // namespace

void ioBufferChecksum::Free::operator()(char * bytes) const { std::free(bytes); }

void ioBufferChecksum::addToSum(char const * bytes, int count) {
    sum_ = onesComplementSum(sum_, bytes, static_cast<std::size_t>(count));
}

// --- output

void ioBufferChecksum::writeFrame(char const * bytes, int count) {
    addToSum(bytes, count);
    char header[headerSize];
    auto const size = static_cast<std::uint32_t>(count);
    putBigEndian(size, header);
    putBigEndian(~size, header + 4);
    std::memcpy(header + 8, &sum_, sizeof sum_);
    next()->write(header, headerSize);
    next()->write(bytes, count);
    promoteStatus(ioBufferEnds::included);
}

void ioBufferChecksum::writeBlock(char * bytes, int count) { writeFrame(bytes, count); }

// The frames are those that the blocks would have been: the last block waits for what follows it.
int ioBufferChecksum::writeLarge(char const * bytes, int count) {
    if (count <= blockSize) {
        return 0;
    }
    flushBuffer();
    int done = 0;
    while (count - done > blockSize && good()) {
        writeFrame(bytes + done, blockSize);
        countBlock(blockSize);
        done += blockSize;
    }
    return done;
}

void ioBufferChecksum::finish() {
    if (!input()) {
        flushChain();
    }
}

void ioBufferChecksum::close() {
    next()->close();
    promoteStatus(ioBufferEnds::ignored);
}

// --- input

int ioBufferChecksum::readBlock(char * bytes, int count) {
    if (int const served = serveKept(bytes, count)) {
        return served;
    }
    return readFrame(bytes, count);
}

int ioBufferChecksum::readLarge(char * bytes, int count) {
    if (count < blockSize) {
        return 0;
    }
    int const got = readBlock(bytes, blockSize);
    countBlock(got);
    return got;
}

int ioBufferChecksum::serveKept(char * bytes, int count) {
    int const piece = std::min(count, keptLength_ - keptPosition_);
    if (piece > 0) {
        std::memcpy(bytes, kept_.get() + keptPosition_, static_cast<std::size_t>(piece));
        keptPosition_ += piece;
    }
    return piece;
}

int ioBufferChecksum::readFrame(char * bytes, int count) {
    char header[headerSize] = {};
    int const headerRead = next()->read(header, headerSize);
    if (headerRead == 0 && !next()->good()) {
        promoteStatus(ioBufferEnds::included);
        return 0;
    }
    auto const size = static_cast<std::int32_t>(getBigEndian(header));
    if (headerRead < headerSize || getBigEndian(header + 4) != ~getBigEndian(header) || size < 1) {
        setStatus(ioBufferChecksumFailed);
        return 0;
    }
    bool const keeps = size > count;
    int const got = keeps ? keepFrame(size) : next()->read(bytes, size);
    addToSum(keeps ? kept_.get() : bytes, got);
    std::uint16_t sum = 0;
    std::memcpy(&sum, header + 8, sizeof sum);
    if (good() && (got < size || sum != sum_)) {
        setStatus(ioBufferChecksumFailed);
    }
    return keeps ? serveKept(bytes, count) : got;
}

// Reads the frame behind a header that may lie about its size: memory is taken as the bytes come, and no more than
// twice what has come. The number of bytes got.
int ioBufferChecksum::keepFrame(int size) {
    constexpr int firstCapacity = 16 * blockSize;
    keptLength_ = 0;
    keptPosition_ = 0;
    while (keptLength_ < size) {
        if (keptLength_ == keptCapacity_) {
            int const capacity = keptCapacity_ < firstCapacity / 2 ? std::min(size, firstCapacity)
                                 : keptCapacity_ > size / 2        ? size
                                                                   : 2 * keptCapacity_;
            char * const larger = static_cast<char *>(std::realloc(kept_.get(), static_cast<std::size_t>(capacity)));
            if (!larger) {
                setStatus(ioBufferFailed);
                break;
            }
            static_cast<void>(kept_.release());
            kept_.reset(larger);
            keptCapacity_ = capacity;
        }
        int const wanted = std::min(size, keptCapacity_) - keptLength_;
        int const got = next()->read(kept_.get() + keptLength_, wanted);
        keptLength_ += got;
        if (got < wanted) {
            break;
        }
    }
    return keptLength_;
}
