#include "Commands.h"

#include "Fault.h"

#include "Base/Containers/qvMap.h"

#include <optional>

namespace {

constexpr std::size_t numberColumns = 10;
constexpr std::size_t bytesColumns = 14;

struct Count {
    std::size_t packets = 0;
    std::size_t objects = 0; // packets with a reference
    std::size_t bytes = 0;

    void add(Packet const & packet) {
        ++packets;
        objects += packet.hasReference ? 1 : 0;
        bytes += packet.size;
    }
};

void printCount(Count const & count, Output & output) {
    output.rightAligned(count.packets, numberColumns);
    output.rightAligned(count.objects, numberColumns);
    output.rightAligned(count.bytes, bytesColumns);
}

void printTable(PacketFile const & file, qv::map<std::int64_t, Count> const & counts, Count const & total,
                Output & output) {
    output.rightAligned("number", numberColumns);
    output.rightAligned("packets", numberColumns);
    output.rightAligned("objects", numberColumns);
    output.rightAligned("bytes", bytesColumns);
    output << "  type\n";
    for (auto const & [type, count] : counts) {
        output.rightAligned(static_cast<std::size_t>(type), numberColumns);
        printCount(count, output);
        output << "  " << nameOfType(file, type) << "\n";
    }
    output.rightAligned("total", numberColumns);
    printCount(total, output);
    output << "\n";
}

} // namespace

std::string_view nameOfForm(PacketFile const & file) {
    switch (file.method()) {
    case ioWriteAscii:
        return "ascii";
    case ioWriteBinary:
        return "binary";
    case ioWriteAsciiDebug:
        return "ascii debug";
    case ioWriteBinaryDebug:
        return "binary debug";
    }
    return "";
}

std::string_view nameOfByteOrder(PacketFile const & file) {
    return file.isLittleEndian() ? "little endian" : "big endian";
}

std::string nameOfType(PacketFile const & file, std::int64_t type) {
    return file.numTypes() > 0 ? printable(file.typeName(type)) : "type " + std::to_string(type);
}

void show(PacketFile & file, Output & output) {
    output << "form        " << nameOfForm(file) << ", version " << static_cast<std::size_t>(file.version()) << "\n";
    output << "byte order  " << nameOfByteOrder(file) << "\n";
    output << "registry    ";
    if (file.numTypes() > 0) {
        output << static_cast<std::size_t>(file.numTypes()) << " types\n";
    } else {
        output << "left out\n";
    }
    output << "header      " << file.headerSize() << " bytes, with the registry\n";

    qv::map<std::int64_t, Count> counts;
    for (std::int64_t type = 0; type < file.numTypes(); ++type) {
        counts[type];
    }
    Count total;
    std::optional<Fault> fault;
    try {
        Packet packet;
        while (file.next(packet)) {
            counts[packet.type].add(packet);
            total.add(packet);
        }
    } catch (Fault const & found) {
        fault = found;
    }
    printTable(file, counts, total, output);
    if (fault) {
        throw Fault(*fault);
    }
    if (file.bytesBehindEnd() > 0) {
        output << "note: " << file.bytesBehindEnd() << " bytes follow the end packet\n";
    }
}
