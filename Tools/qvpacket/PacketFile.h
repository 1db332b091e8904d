// A packet file taken apart, over bytes in memory: its header, its registry, and one packet after the other.

#ifndef PacketFile_h
#define PacketFile_h

#include "Base/Containers/qvVector.h"
#include "Base/DataFiles/ioHeader.h"
#include "Base/Utility/qvUtilProgress.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

struct Packet {
    std::size_t offset = 0; // of its frame
    std::size_t size = 0;   // of the whole packet
    std::int64_t type = 0;
    bool hasReference = false;
    std::size_t bodyOffset = 0;
    std::string_view body; // in an ASCII file without the closing brace
};

// Reads as strictly as a writer writes: what a reader of packets would pass over is a Fault here. The bytes must stay
// where they are.
class PacketFile {
public:
    // Takes the header and the registry. The progress is told what part of the bytes is taken.
    PacketFile(std::string_view bytes, qvUtil::Progress & progress);

    int version() const { return version_; }
    bool isLittleEndian() const { return littleEndian_; }
    ioWriteMethod method() const { return method_; }
    bool isBinary() const { return method_ == ioWriteBinary || method_ == ioWriteBinaryDebug; }
    bool isDebug() const { return method_ == ioWriteAsciiDebug || method_ == ioWriteBinaryDebug; }
    std::size_t headerSize() const { return headerSize_; }

    // A file may leave its registry out; then its packets have numbers only.
    int numTypes() const { return typeNames_.size(); }
    std::string_view typeName(std::int64_t type) const;

    // The next packet, the end packet included. False behind that. What the file holds behind the end packet is none
    // of its own.
    bool next(Packet & packet);
    std::size_t bytesBehindEnd() const { return bytes_.size() - at_; }

private:
    void takeHeader();
    void takeRegistry();
    void takeRegistryLine();
    void takeBinaryPacket(Packet & packet);
    void takeAsciiPacket(Packet & packet);
    void checkFrame(Packet const & packet, std::int64_t flag, std::size_t typeAt, std::size_t flagAt) const;
    void checkEndPacket(Packet const & packet) const;
    bool isEnd(Packet const & packet) const;

    void expect(std::string_view text, char const * what);
    int takeNumber(char const * what);
    std::int64_t load32(std::size_t at) const;

    std::string_view bytes_;
    qvUtil::Progress & progress_;
    std::size_t at_ = 0;
    bool ended_ = false;
    int version_ = 0;
    bool littleEndian_ = true;
    ioWriteMethod method_ = ioWriteAscii;
    std::size_t headerSize_ = 0;
    qv::vector<std::string_view> typeNames_;
};

#endif
