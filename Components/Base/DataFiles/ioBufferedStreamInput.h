// A byte stream that reads.

#ifndef ioBufferedStreamInput_h
#define ioBufferedStreamInput_h

#include "Base/DataFiles/ioBufferedStream.h"

namespace qvOS {
class IOStream;
}
class ioPackageFileEntry;

// Reads from a file, from standard input or, through other ends of the chain, from elsewhere:
//
//     ioBufferedStreamInput stream;
//     stream.openFile(name);
//     char line[80];
//     while (stream.good()) {
//         stream.readLine(line, sizeof line);
//     }
//
// Reading past the end gives ioStreamEOF and zero or short results. Data is taken from the system in blocks of
// 4096 bytes, of a file in some thirty at once, so a file is read ahead of what the caller has seen.
class QV_EXPORT ioBufferedStreamInput : public ioBufferedStream {
public:
    ioBufferedStreamInput();
    ~ioBufferedStreamInput() override;
    void openFile(qvString::IString const & name) override;
    void openSocket(qvTCP::Socket * socket) override;
    // On a stream that stays the caller's, and open, and outlives this one's use of it. A null one sets ioStreamFailed.
    void openIOStream(qvOS::IOStream * stream);
    // Presents the size bytes from start on as a whole file: positions are those in the slice. The status is not reset
    // first, and one that is neither good nor ioStreamEOF leaves the stream closed. A slice that runs past the end of
    // the file, or is empty, sets ioStreamEOF but opens: readData gives what is there at once, the other operations
    // behind resetStatus. A start or a size below 0 gives ioStreamOpenFailed.
    void openFileSlice(qvString::IString const & name, std::int64_t start, std::int64_t size);
    // The bytes of an entry as they are stored: those of a compressed one need compress(true) and then checksum(true).
    // A null entry gives ioStreamFailed, one of a package that is not open ioStreamOpenFailed.
    void openPackageFileEntry(ioPackageFileEntry const * entry);
    // close will close standard input.
    void openStdin();

    // The next byte, or 0 when there is none; the status tells.
    char readChar();
    // A decimal number behind any blanks, newlines and tabs: an optional minus sign and digits, at most 39
    // characters, clamped to the limits of an int. The character behind the number is consumed. 0 where there is no
    // number.
    int readInt();
    // One line of up to size - 1 bytes, its newline included, always terminated. A size below 1 (the buffer then
    // holds at least one character) or a status that is not good gives an empty string.
    void readLine(char * buffer, int size);
    // Reads count bytes, fewer at the end of the data, and gives the number read.
    int readData(char * bytes, int count);

private:
    friend struct ioStreamBlock;

    bool fillTop();
};

#endif
