// One packet in memory: being built until its end sends it to the stream, or read whole before its fields are taken.

#ifndef ioPacketFileBuffer_h
#define ioPacketFileBuffer_h

class ioBufferedStreamInput;
class ioBufferedStreamOutput;
class ioPacketType;
class ioReadContext;
class ioWriteContext;

// One exists per nesting level of packets in a context, and is reused. Chunks and sub-packets are framed here, in the
// two encodings of the subclasses. Sub-packets raise the level; each level has at most one open chunk.
class ioPacketFileBuffer {
public:
    virtual ~ioPacketFileBuffer();

    virtual void beginWrite(ioWriteContext & context, bool hasReference, ioPacketType const * type) = 0;
    virtual void endWrite(ioWriteContext & context, ioBufferedStreamOutput & stream) = 0;
    virtual void writeChunkStart(ioWriteContext & context) = 0;
    virtual void writeChunkEnd(ioWriteContext & context) = 0;
    virtual void writeSubPacketStart(ioWriteContext & context) = 0;
    virtual void writeSubPacketEnd(ioWriteContext & context) = 0;

    // Loads the next packet and sets its type, null for a number that the registry does not know. The result is the
    // packet's reference flag.
    virtual int readFromStream(ioReadContext & context, ioBufferedStreamInput & stream) = 0;
    virtual void endRead(ioReadContext & context) = 0;
    // Steps into the chunk at the position, if there is one; then the level's chunk is open.
    virtual void readChunkStart(ioReadContext & context) = 0;
    // Whether the current chunk holds data.
    virtual bool readChunkValid() = 0;
    // Steps behind the current chunk, whatever of it was read.
    virtual void readChunkEnd(ioReadContext & context) = 0;
    virtual void readSubPacketStart(ioReadContext & context) = 0;
    virtual void readSubPacketEnd(ioReadContext & context) = 0;

    ioPacketFileBuffer(ioPacketFileBuffer const &) = delete;
    ioPacketFileBuffer & operator=(ioPacketFileBuffer const &) = delete;

    // Level 0 without an open chunk, no type, valid.
    void reset();
    int level() const { return level_; }
    void enterLevel();
    void leaveLevel() { --level_; }
    bool chunkOpen() const { return chunkOpenAt(level_); }
    bool chunkOpenAt(int level) const { return chunkOpen_[level]; }
    void setChunkOpen(bool open) { chunkOpen_[level_] = open; }
    bool valid() const { return valid_; }
    void invalidate() { valid_ = false; }
    // The packet outgrew what its sizes can tell, and has been given up.
    bool failed() const { return failed_; }
    void fail() {
        failed_ = true;
        valid_ = false;
    }
    ioPacketType const * type() const { return type_; }
    void setType(ioPacketType const * type) { type_ = type; }

protected:
    ioPacketFileBuffer();

private:
    bool * chunkOpen_; // by level
    int capacity_;
    int level_;
    bool valid_;
    bool failed_ = false;
    ioPacketType const * type_;
};

#endif
