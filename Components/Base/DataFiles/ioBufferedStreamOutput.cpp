#include "Base/DataFiles/ioBufferedStreamOutput.h"

#include "Base/DataFiles/Internal/ioBoundedFormat.h"
#include "Base/DataFiles/Internal/ioBufferFD.h"
#include "Base/DataFiles/Internal/ioBufferIOStream.h"
#include "Base/DataFiles/Internal/ioBufferTCP.h"

#include <cstring>
#include <limits>

ioBufferedStreamOutput::ioBufferedStreamOutput() : ioBufferedStream(false), truncate_(true) {}

ioBufferedStreamOutput::~ioBufferedStreamOutput() = default;

void ioBufferedStreamOutput::openFile(qvString::IString const & name) {
    close();
    auto end = std::make_unique<ioBufferFD>(ioBufferDirection::output);
    end->setTruncate(truncate_);
    end->open(name);
    openOn(end.release());
}

void ioBufferedStreamOutput::close() {
    flush();
    ioBufferedStream::close();
}

void ioBufferedStreamOutput::openSocket(qvTCP::Socket * socket) {
    close();
    if (socket) {
        setStatus(ioStreamOpenFailed);
    } else {
        openOn(new ioBufferTCP(ioBufferDirection::output, nullptr));
    }
}

void ioBufferedStreamOutput::openIOStream(qvOS::IOStream * stream) {
    close();
    openOn(new ioBufferIOStream(ioBufferDirection::output, stream));
}

void ioBufferedStreamOutput::openStdout() {
    close();
    auto end = std::make_unique<ioBufferFD>(ioBufferDirection::output);
    end->open(qvPlatform::standardOutput());
    openOn(end.release());
}

void ioBufferedStreamOutput::flush() {
    if (top()) {
        top()->flushChain();
        promoteBufferStatus();
    }
}

void ioBufferedStreamOutput::writeChar(char c) {
    if (requireOpen()) {
        top()->flushBuffer();
        promoteBufferStatus();
        top()->write(&c, 1);
    }
}

void ioBufferedStreamOutput::writeData(char const * bytes, int count) {
    if (requireOpen()) {
        top()->write(bytes, count);
        promoteBufferStatus();
    }
}

void ioBufferedStreamOutput::writeString(char const * text) {
    constexpr std::size_t maxPiece = std::numeric_limits<int>::max();
    std::size_t left = text ? std::strlen(text) : 0;
    if (left == 0) {
        requireOpen();
        return;
    }
    while (left > 0 && goodSoFar()) {
        std::size_t const piece = left < maxPiece ? left : maxPiece;
        writeData(text, static_cast<int>(piece));
        text += piece;
        left -= piece;
    }
}

void ioBufferedStreamOutput::printf(char const * format, ...) {
    va_list arguments;
    va_start(arguments, format);
    ioBoundedFormat const text(format, arguments);
    va_end(arguments);
    writeString(text.text());
}
