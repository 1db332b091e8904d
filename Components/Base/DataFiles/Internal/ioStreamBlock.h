// How readers of text look into the block of an input stream instead of taking it byte by byte.

#ifndef ioStreamBlock_h
#define ioStreamBlock_h

class ioBufferedStreamInput;

// Somebody who reads bytes where they lie in a stream's storage. The stream tells it before it moves them.
class ioStreamBorrower {
public:
    // The last moment to copy the bytes.
    virtual void takeOver() = 0;

protected:
    ~ioStreamBorrower() = default;
};

struct ioStreamBlock {
    char const * begin;
    char const * end;

    // What can be had without blocking twice: the bytes left in the top link's block, filled first when it is used
    // up. Empty when the stream has no more; the stream's status tells why.
    static ioStreamBlock of(ioBufferedStreamInput & stream);
    static void consume(ioBufferedStreamInput & stream, int count);
    // Takes so many bytes without copying them, or nothing when they do not lie in one piece. They stay until the next
    // operation on the stream, which calls takeOver() first, unless they were given back before.
    static char const * takeInPlace(ioBufferedStreamInput & stream, int count, ioStreamBorrower & borrower);
    static void giveBack(ioBufferedStreamInput & stream);
    // Takes the next byte if there is one and it is c. The end of the data is left for the next read to meet.
    static void skipIfNext(ioBufferedStreamInput & stream, char c);
};

#endif
