// A byte stream that writes.

#ifndef ioBufferedStreamOutput_h
#define ioBufferedStreamOutput_h

#include "Base/DataFiles/ioBufferedStream.h"

namespace qvOS {
class IOStream;
}

// Writes to a file, to standard output or, through other ends of the chain, elsewhere. Data goes out in blocks of
// 4096 bytes, several of them at once; the rest at flush and close, and when the status or the position is asked for.
// Once the status is not good, further bytes are dropped; test it behind close to know that everything has arrived:
//
//     ioBufferedStreamOutput stream;
//     stream.openFile(name);
//     stream.writeString("...");
//     stream.close();
//     if (!stream.good()) ...
class QV_EXPORT ioBufferedStreamOutput : public ioBufferedStream {
public:
    ioBufferedStreamOutput();
    ~ioBufferedStreamOutput() override;
    // Creates the file, with reading and writing for its owner only, when it is not there.
    void openFile(qvString::IString const & name) override;
    void close() override;
    void openSocket(qvTCP::Socket * socket) override;
    // On a stream that stays the caller's, and open, and outlives this one's use of it. A null one sets ioStreamFailed.
    void openIOStream(qvOS::IOStream * stream);
    // close will close standard output.
    void openStdout();
    // Whether later openFile calls empty the file, which they do at first. False opens it for update in place.
    void truncateOnOpen(bool truncate) { truncate_ = truncate; }

    // Sends what the links hold to the end of the chain. Nothing on a closed stream.
    void flush();
    // Sends on what the top link holds, and leaves the one byte there until the next flush.
    void writeChar(char c);
    void writeData(char const * bytes, int count);
    // Without the terminator. A null pointer writes nothing.
    void writeString(char const * text);
    // In the library's printf formats. At most 1023 bytes come out; the rest of a longer text is lost.
    void printf(char const * format, ...);

private:
    bool truncate_;
};

#endif
