#include "Base/DataFiles/Internal/ioBufferCompress.h"

#include "Base/DataFiles/Internal/ioLzwDecoder.h"
#include "Base/DataFiles/Internal/ioLzwEncoder.h"

#include <algorithm>

ioBufferCompress::ioBufferCompress(ioBufferDirection direction) : ioBuffer(direction) {}

ioBufferCompress::~ioBufferCompress() = default;

// --- output

bool ioBufferCompress::prepareEncoder() {
    if (!encoder_) {
        encoder_ = ioLzwEncoder::make();
    }
    if (!encoder_ && good()) {
        setStatus(ioBufferFailed);
    }
    return encoder_ != nullptr;
}

void ioBufferCompress::writeOutput() {
    next()->write(encoder_->output(), encoder_->outputSize());
    encoder_->takeOutput();
}

void ioBufferCompress::writeBlock(char * bytes, int count) {
    if (finished_ || !prepareEncoder()) {
        setStatus(ioBufferFailed);
        return;
    }
    for (int done = 0; done < count;) {
        int const piece = std::min(count - done, ioLzwEncoder::maxInput);
        encoder_->encode(bytes + done, piece);
        writeOutput();
        done += piece;
    }
    promoteStatus(ioBufferEnds::included);
}

void ioBufferCompress::finish() {
    if (finished_) {
        return;
    }
    if (input()) {
        if (decoder_ && good() && numAvailable() == 0) {
            decoder_->takeEnd(*next());
        }
    } else {
        flushBuffer();
        if (prepareEncoder()) {
            encoder_->end();
            writeOutput();
        }
    }
    finished_ = true;
    if (!input()) {
        flushChain();
    }
}

void ioBufferCompress::close() {
    if (!input()) {
        finish();
    }
    next()->close();
    promoteStatus(ioBufferEnds::ignored);
}

// --- input

int ioBufferCompress::readBlock(char * bytes, int count) {
    if (!decoder_) {
        decoder_ = ioLzwDecoder::make();
    }
    if (!decoder_) {
        setStatus(ioBufferFailed);
        return 0;
    }
    int const delivered = decoder_->decode(bytes, count, *next());
    if (delivered == 0 && decoder_->state() == ioLzwDecoder::State::ended) {
        setStatus(ioBufferCompressEnd);
        return 0;
    }
    promoteStatus(ioBufferEnds::ignored);
    if (delivered == 0 && good()) {
        setStatus(ioBufferFailed); // no end of the data below is one: a sound stream has its end code
    }
    return delivered;
}
