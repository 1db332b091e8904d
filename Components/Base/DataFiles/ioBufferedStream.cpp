#include "Base/DataFiles/ioBufferedStream.h"

#include "Base/DataFiles/Internal/ioBuffer.h"
#include "Base/DataFiles/Internal/ioBufferChecksum.h"
#include "Base/DataFiles/Internal/ioBufferCompress.h"
#include "Base/DataFiles/Internal/ioBufferEncrypt.h"
#include "Base/DataFiles/Internal/ioStreamBlock.h"
#include "Base/Platform/PlatformFile.h"
#include "Base/Strings/qvStringIString.h"

ioBufferedStream::ioBufferedStream(bool input) : status_(ioStreamGood), input_(input), top_(nullptr) {}

ioBufferedStream::~ioBufferedStream() {
    recall();
    delete top_;
}

// Bytes that somebody reads in the chain's storage are about to move.
void ioBufferedStream::recall() {
    if (borrower_) {
        ioStreamBorrower * const borrower = borrower_;
        borrower_ = nullptr;
        borrower->takeOver();
    }
}

// The two enumerations number some of their values differently. This is the one place that knows both.
void ioBufferedStream::promoteBufferStatus() const {
    switch (top_->status()) {
    case ioBufferGood:
        return;
    case ioBufferOpenFailed:
        status_ = ioStreamOpenFailed;
        return;
    case ioBufferEOF:
        status_ = ioStreamEOF;
        return;
    case ioBufferCompressEnd:
        status_ = ioStreamCompressEnd;
        return;
    case ioBufferDiskFull:
        status_ = ioStreamDiskFull;
        return;
    case ioBufferChecksumFailed:
        status_ = ioStreamChecksumFailed;
        return;
    case ioBufferFailed:
        status_ = ioStreamFailed;
        return;
    }
}

void ioBufferedStream::settle() const {
    top_->settleChain();
    promoteBufferStatus();
}

void ioBufferedStream::openOn(ioBuffer * end) {
    status_ = ioStreamGood;
    adopt(end);
    if (!goodSoFar()) {
        abandonChain();
    }
}

void ioBufferedStream::adopt(ioBuffer * end) {
    top_ = end;
    promoteBufferStatus();
}

void ioBufferedStream::abandonChain() {
    delete top_;
    top_ = nullptr;
}

bool ioBufferedStream::requireOpen() {
    recall();
    if (!top_) {
        status_ = ioStreamFailed;
    }
    return top_ != nullptr;
}

void ioBufferedStream::close() {
    recall();
    if (top_) {
        top_->close();
        promoteBufferStatus();
        abandonChain();
    }
}

// A filter has no position, and input that it has read ahead could not be had again.
bool ioBufferedStream::hasPosition() { return requireOpen() && (!input_ || top_->isEnd()); }

bool ioBufferedStream::seek(std::int64_t position) {
    if (!hasPosition()) {
        return false;
    }
    top_->flushChain();
    bool const done = top_->seek(position);
    promoteBufferStatus();
    return done;
}

std::int64_t ioBufferedStream::tell() {
    if (!hasPosition()) {
        return 0;
    }
    top_->flushChain();
    return top_->tell();
}

void ioBufferedStream::associateProgressFunction(void (*progress)(int)) {
    if (top_) {
        top_->setProgress(progress);
    }
}

std::int64_t ioBufferedStream::fileSize(qvString::IString const & name) {
    return name.isEmpty() ? -1 : qvPlatform::sizeOfFile(name);
}

void ioBufferedStream::addBufferToChain(ioBuffer * link) {
    link->setNext(std::unique_ptr<ioBuffer>(top_));
    top_ = link;
}

void ioBufferedStream::popBufferChain() {
    std::unique_ptr<ioBuffer> const popped(top_);
    std::unique_ptr<ioBuffer> below = popped->popNext();
    if (!input_) {
        promoteBufferStatus(); // what the filter's end has met
    }
    top_ = below.release();
}

template <class Filter>
void ioBufferedStream::pushOrPop(bool on) {
    if (!requireOpen()) {
        return;
    }
    if (on) {
        addBufferToChain(new Filter(input_ ? ioBufferDirection::input : ioBufferDirection::output));
    } else if (top_->isEnd()) {
        setStatus(ioStreamFailed);
    } else {
        popBufferChain();
    }
}

void ioBufferedStream::compress(bool on) {
    pushOrPop<ioBufferCompress>(on);
    if (!on && status_ == ioStreamCompressEnd) {
        status_ = ioStreamGood;
    }
}

void ioBufferedStream::checksum(bool on) { pushOrPop<ioBufferChecksum>(on); }

void ioBufferedStream::encrypt(bool on) { pushOrPop<ioBufferEncrypt>(on); }
