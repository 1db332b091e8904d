#include "Base/DataFiles/ioBufferedStreamInput.h"

#include "Base/DataFiles/Internal/ioBufferFD.h"
#include "Base/DataFiles/Internal/ioBufferFileSubset.h"
#include "Base/DataFiles/Internal/ioBufferIOStream.h"
#include "Base/DataFiles/Internal/ioBufferTCP.h"
#include "Base/DataFiles/Internal/ioNumberText.h"
#include "Base/DataFiles/Internal/ioStreamBlock.h"
#include "Base/DataFiles/ioPackageFileEntry.h"

#include <algorithm>
#include <cstring>

ioBufferedStreamInput::ioBufferedStreamInput() : ioBufferedStream(true) {}

ioBufferedStreamInput::~ioBufferedStreamInput() = default;

void ioBufferedStreamInput::openFile(qvString::IString const & name) {
    close();
    auto end = std::make_unique<ioBufferFD>(ioBufferDirection::input);
    end->open(name);
    openOn(end.release());
}

void ioBufferedStreamInput::openSocket(qvTCP::Socket * socket) {
    close();
    if (socket) {
        setStatus(ioStreamOpenFailed);
    } else {
        openOn(new ioBufferTCP(ioBufferDirection::input, nullptr));
    }
}

void ioBufferedStreamInput::openIOStream(qvOS::IOStream * stream) {
    close();
    openOn(new ioBufferIOStream(ioBufferDirection::input, stream));
}

void ioBufferedStreamInput::openFileSlice(qvString::IString const & name, std::int64_t start, std::int64_t size) {
    close();
    auto * const end = new ioBufferFileSubset(size);
    end->open(name, start, size);
    adopt(end);
    if (getStatus() == ioStreamEOF) {
        end->resume();
    } else if (!good()) {
        abandonChain();
    }
}

void ioBufferedStreamInput::openPackageFileEntry(ioPackageFileEntry const * entry) {
    close();
    setStatus(ioStreamGood);
    if (!entry) {
        setStatus(ioStreamFailed);
    } else if (entry->getPackageName().isEmpty()) {
        setStatus(ioStreamOpenFailed);
    } else {
        openFileSlice(entry->getPackageName(), entry->getOffset(), entry->getSize());
    }
}

void ioBufferedStreamInput::openStdin() {
    close();
    auto end = std::make_unique<ioBufferFD>(ioBufferDirection::input);
    end->open(qvPlatform::standardInput());
    openOn(end.release());
}

// Whether there is a byte to take. The chain is open.
bool ioBufferedStreamInput::fillTop() {
    if (top()->numAvailable() > 0) {
        return true;
    }
    do {
        top()->fill();
    } while (top()->numAvailable() == 0 && top()->good());
    promoteBufferStatus();
    return good() && top()->numAvailable() > 0;
}

char ioBufferedStreamInput::readChar() {
    if (!requireOpen() || !fillTop()) {
        return 0;
    }
    char const c = *top()->available();
    top()->consume(1);
    return c;
}

int ioBufferedStreamInput::readInt() {
    constexpr int maxCharacters = 39;
    char text[maxCharacters + 1];
    int length = 0;
    char c = readChar();
    while (c == ' ' || c == '\n' || c == '\t') {
        c = readChar();
    }
    if (c == '-') {
        text[length++] = c;
        c = readChar();
    }
    while (c >= '0' && c <= '9' && length < maxCharacters) {
        text[length++] = c;
        c = readChar();
    }
    return ioNumberText::parseInt(text, text + length);
}

void ioBufferedStreamInput::readLine(char * buffer, int size) {
    if (!buffer) {
        return;
    }
    buffer[0] = 0;
    if (size < 1 || !good() || !requireOpen()) {
        return;
    }
    int length = 0;
    while (length < size - 1 && fillTop()) {
        auto const room = static_cast<std::size_t>(std::min(size - 1 - length, top()->numAvailable()));
        void const * newline = std::memchr(top()->available(), '\n', room);
        auto const piece =
            newline ? static_cast<std::size_t>(static_cast<char const *>(newline) - top()->available()) + 1 : room;
        std::memcpy(buffer + length, top()->available(), piece);
        top()->consume(static_cast<int>(piece));
        length += static_cast<int>(piece);
        if (newline) {
            break;
        }
    }
    buffer[length] = 0;
}

int ioBufferedStreamInput::readData(char * bytes, int count) {
    if (!requireOpen()) {
        return 0;
    }
    int const copied = top()->read(bytes, count);
    promoteBufferStatus();
    return copied;
}

ioStreamBlock ioStreamBlock::of(ioBufferedStreamInput & stream) {
    if (!stream.requireOpen() || !stream.fillTop()) {
        return {nullptr, nullptr};
    }
    char const * begin = stream.top()->available();
    return {begin, begin + stream.top()->numAvailable()};
}

void ioStreamBlock::consume(ioBufferedStreamInput & stream, int count) { stream.top()->consume(count); }

char const * ioStreamBlock::takeInPlace(ioBufferedStreamInput & stream, int count, ioStreamBorrower & borrower) {
    char const * const bytes = stream.top() ? stream.top()->takeInPlace(count) : nullptr;
    stream.setBorrower(bytes ? &borrower : nullptr);
    return bytes;
}

void ioStreamBlock::giveBack(ioBufferedStreamInput & stream) { stream.setBorrower(nullptr); }

void ioStreamBlock::skipIfNext(ioBufferedStreamInput & stream, char c) {
    ioBuffer * top = stream.top();
    if (!top) {
        return;
    }
    if (top->numAvailable() == 0) {
        top->fill();
    }
    if (top->numAvailable() > 0 && *top->available() == c) {
        top->consume(1);
    }
}
