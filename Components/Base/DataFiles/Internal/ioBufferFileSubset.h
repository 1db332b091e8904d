// The end of a chain that reads a byte range of a file as if it were a whole file.

#ifndef ioBufferFileSubset_h
#define ioBufferFileSubset_h

#include "Base/DataFiles/Internal/ioBufferFD.h"

// Input only. Positions are those in the range. A range that reaches past the end of its file has ioBufferEOF from the
// opening on; resume makes what is there readable.
class ioBufferFileSubset : public ioBufferReadAhead {
public:
    // For a range of so many bytes.
    explicit ioBufferFileSubset(std::int64_t size)
        : ioBufferReadAhead(ioBufferDirection::input, size),
          inner_(ioBufferDirection::input, ioBufferFD::Blocks::unused) {}
    // Beyond the end, and below 0: false and ioBufferEOF.
    bool seek(std::int64_t position) override;
    std::int64_t tell() override;
    int bufferType() const override { return 6; }
    void close() override;
    // -1 when the status is not good.
    int readBlock(char * bytes, int count) override;
    void writeBlock(char * bytes, int count) override;

    // A start or a size below 0 sets ioBufferOpenFailed, like a file that the system refuses.
    void open(qvString::IString const & name, std::int64_t start, std::int64_t size);
    // Behind an opening that has set ioBufferEOF: good, at the begin of the range.
    void resume();

protected:
    bool canReadAhead() const override { return inner_.canReadAhead(); }
    int tryRead(char * bytes, int count) override;
    void giveBack(int count) override;

private:
    bool takePosition();
    int cutToRange(int count) const;

    ioBufferFD inner_;
    std::int64_t start_ = 0;
    std::int64_t size_ = 0;
    std::int64_t current_ = -1; // below 0: to be asked of the inner link
};

#endif
