#include "Base/DataFiles/Internal/ioBufferEncrypt.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace {

constexpr int mostInFrame = 240;
constexpr char ownOrder = std::endian::native == std::endian::little ? 1 : 0;

constexpr int blockBytes = ioCipher::blockBytes;

std::size_t numBlocks(int bytes) { return static_cast<std::size_t>(bytes) / ioCipher::blockBytes; }

// A writer of the other byte order takes the words of a block the other way round.
void swapWords(char * bytes, int count) {
    for (int at = 0; at < count; at += 4) {
        std::reverse(bytes + at, bytes + at + 4);
    }
}

} // namespace

void ioBufferEncrypt::buildKey() {
    // Like the constants of the key's expansion, part of what a stream can be read with.
    std::uint32_t const words[8] = {0x3C91E8A5, 0xD6274B1F, 0x81F05C63, 0x4AB79D2E,
                                    0xE9630F74, 0x172DC8BA, 0x5E84A639, 0xB20F71CD};
    ioCipher::expandKey(words, sizeof words, table_);
}

// --- output

void ioBufferEncrypt::writeBlock(char * bytes, int count) {
    if (!initialised_) {
        initialised_ = true;
        buildKey();
        next()->write(&ownOrder, 1);
    }
    // A frame has a whole number of blocks but for the last, so the blocks lie behind one another.
    ioCipher::encipher(bytes, numBlocks(count), table_);
    for (int done = 0; done < count;) {
        int const length = std::min(count - done, mostInFrame);
        auto const lengthByte = static_cast<char>(length);
        next()->write(&lengthByte, 1);
        next()->write(bytes + done, length);
        done += length;
    }
    promoteStatus(ioBufferEnds::included);
}

void ioBufferEncrypt::finish() {
    if (!input()) {
        flushChain();
    }
}

void ioBufferEncrypt::close() {
    next()->close();
    promoteStatus(ioBufferEnds::ignored);
}

// --- input

bool ioBufferEncrypt::readOrderMark() {
    initialised_ = true;
    buildKey();
    char mark = 0;
    if (next()->read(&mark, 1) == 0) {
        promoteStatus(ioBufferEnds::included);
        return false;
    }
    if (mark != 0 && mark != 1) {
        setStatus(ioBufferFailed);
        return false;
    }
    swap_ = mark != ownOrder;
    return true;
}

int ioBufferEncrypt::readBlock(char * bytes, int count) {
    if (!initialised_ && !readOrderMark()) {
        return 0;
    }
    if (framePosition_ == frameLength_ && readFrame() == 0) {
        return 0;
    }
    int const piece = std::min(count, frameLength_ - framePosition_);
    std::memcpy(bytes, frame_ + framePosition_, static_cast<std::size_t>(piece));
    framePosition_ += piece;
    return piece;
}

// The length of the frame that is now in the store.
int ioBufferEncrypt::readFrame() {
    frameLength_ = 0;
    framePosition_ = 0;
    char lengthByte = 0;
    if (next()->read(&lengthByte, 1) == 0) {
        promoteStatus(ioBufferEnds::included);
        return 0;
    }
    int const length = static_cast<unsigned char>(lengthByte);
    if (next()->read(frame_, length) < length) {
        setStatus(ioBufferFailed);
        return 0;
    }
    int const enciphered = length - length % blockBytes;
    if (swap_) {
        swapWords(frame_, enciphered);
    }
    ioCipher::decipher(frame_, numBlocks(length), table_);
    if (swap_) {
        swapWords(frame_, enciphered);
    }
    promoteStatus(length == 0 ? ioBufferEnds::included : ioBufferEnds::ignored);
    frameLength_ = length;
    return length;
}
