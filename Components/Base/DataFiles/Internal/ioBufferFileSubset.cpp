#include "Base/DataFiles/Internal/ioBufferFileSubset.h"

#include <algorithm>

void ioBufferFileSubset::open(qvString::IString const & name, std::int64_t start, std::int64_t size) {
    if (start < 0 || size < 0) {
        setStatus(ioBufferOpenFailed);
        return;
    }
    start_ = start;
    size_ = size;
    inner_.open(name);
    setStatus(inner_.status());
    if (!good()) {
        return;
    }
    // Asked of the very file that is open: its name may stand for another one by now.
    if (inner_.seekToEnd() - start < size) {
        setStatus(ioBufferEOF);
    } else {
        seek(0);
    }
}

void ioBufferFileSubset::resume() {
    setStatus(ioBufferGood);
    if (!seek(0)) {
        setStatus(ioBufferEOF); // the file cannot even be sought there
    }
}

bool ioBufferFileSubset::seek(std::int64_t position) {
    forgetBlocks();
    current_ = -1;
    if (position < 0 || position >= size_) {
        if (good()) {
            setStatus(ioBufferEOF);
        }
        return false;
    }
    if (!inner_.seek(start_ + position)) {
        return false;
    }
    current_ = position;
    return true;
}

std::int64_t ioBufferFileSubset::tell() { return inner_.tell() - start_; }

void ioBufferFileSubset::close() {
    inner_.close();
    if (good() && inner_.status() == ioBufferFailed) {
        setStatus(ioBufferFailed);
    }
}

// False where the file is at no position of the range.
bool ioBufferFileSubset::takePosition() {
    if (current_ < 0) {
        current_ = tell();
    }
    return current_ >= 0;
}

int ioBufferFileSubset::cutToRange(int count) const {
    return static_cast<int>(std::clamp<std::int64_t>(size_ - current_, 0, count));
}

int ioBufferFileSubset::readBlock(char * bytes, int count) {
    if (!good()) {
        return -1;
    }
    if (!takePosition()) {
        setStatus(ioBufferFailed);
        return 0;
    }
    int const wanted = cutToRange(count);
    if (wanted == 0) {
        setStatus(ioBufferEOF);
        return 0;
    }
    int const got = inner_.readBlock(bytes, wanted);
    if (got > 0) {
        current_ += got;
    } else {
        setStatus(inner_.status());
    }
    return got;
}

int ioBufferFileSubset::tryRead(char * bytes, int count) {
    int const wanted = takePosition() ? cutToRange(count) : 0;
    int const got = wanted > 0 ? inner_.tryRead(bytes, wanted) : 0;
    current_ += got;
    return got;
}

void ioBufferFileSubset::giveBack(int count) {
    std::int64_t const position = (current_ < 0 ? tell() : current_) - count;
    current_ = inner_.seek(start_ + position) ? position : -1;
}

void ioBufferFileSubset::writeBlock(char *, int) { setStatus(ioBufferFailed); }
