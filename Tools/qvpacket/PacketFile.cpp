#include "PacketFile.h"

#include "Base/Containers/qvSet.h"

#include "Fault.h"
#include "Text.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <iterator>
#include <string>

namespace {

using std::size_t;

// What the reader of a registry takes in: a number, a blank, the name and a newline.
constexpr size_t maxRegistryLine = 95;
constexpr size_t maxTypeName = 83;
constexpr std::string_view stringTypeName = "packetFile_string";
constexpr std::string_view endTypeName = "packetFile_EOF";
constexpr int endTypeNumber = 1;

// A header of the binary forms names these sizes of its types. The seventh means nothing.
constexpr int typeSizes[] = {1, 2, 4, 8, 4, 8};

constexpr size_t binaryFrameSize = 12;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isWhite(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Where the text's first closing brace stands that no backslash protects.
size_t findFrameEnd(std::string_view text, size_t begin) {
    for (size_t brace = text.find('}', begin); brace != text.npos; brace = text.find('}', brace + 1)) {
        size_t front = brace;
        while (front > begin && text[front - 1] == '\\') {
            --front;
        }
        if ((brace - front) % 2 == 0) {
            return brace;
        }
    }
    return text.npos;
}

} // namespace

PacketFile::PacketFile(std::string_view bytes, qvUtil::Progress & progress) : bytes_(bytes), progress_(progress) {
    takeHeader();
    takeRegistry();
    headerSize_ = at_;
}

std::string_view PacketFile::typeName(std::int64_t type) const {
    return type < numTypes() ? typeNames_[static_cast<int>(type)] : std::string_view();
}

// Goes behind the text, which must stand at the position. The fault is where the first other byte stands.
void PacketFile::expect(std::string_view text, char const * what) {
    for (char const wanted : text) {
        if (at_ == bytes_.size() || bytes_[at_] != wanted) {
            throw Fault{at_, what};
        }
        ++at_;
    }
}

int PacketFile::takeNumber(char const * what) {
    char const * const begin = bytes_.data() + at_;
    char const * const end = bytes_.data() + bytes_.size();
    int number = 0;
    if (begin == end || !isDigit(*begin)) {
        throw Fault{at_, std::string(what) + " is not a number"};
    }
    auto const result = std::from_chars(begin, end, number);
    if (result.ec != std::errc()) {
        throw Fault{at_, std::string(what) + " is too large"};
    }
    at_ += static_cast<size_t>(result.ptr - begin);
    return number;
}

void PacketFile::takeHeader() {
    expect("^@\n", "the magic line of a packet file is missing");
    version_ = takeNumber("the version");
    expect("\n", "the version line is not a number alone");

    size_t const flagAt = at_;
    int const flag = takeNumber("the byte order flag");
    if (flag > 1) {
        throw Fault{flagAt, "the byte order flag is neither 0 nor 1"};
    }
    littleEndian_ = flag == 1;
    expect(" ", "the format line is not three numbers with blanks between them");
    size_t const methodAt = at_;
    int const method = takeNumber("the method");
    if (method > ioWriteBinaryDebug) {
        throw Fault{methodAt, "the method is not 0, 1, 2 or 3"};
    }
    method_ = static_cast<ioWriteMethod>(method);
    expect(" ", "the format line is not three numbers with blanks between them");
    expect("1\n", "the format flag is not 1");

    for (size_t i = 0; i < std::size(typeSizes); ++i) {
        size_t const sizeAt = at_;
        int const size = takeNumber("the size of a type");
        if (isBinary() && size != typeSizes[i]) {
            throw Fault{sizeAt, "the size of a type is not the one of a binary file"};
        }
        expect(" ", "the size line is not seven numbers with blanks between them");
    }
    takeNumber("the size of a type");
    expect("\n", "the size line is not seven numbers with blanks between them");
    expect("@\n", "the end line of the header is missing");
}

void PacketFile::takeRegistry() {
    qv::set<std::string_view> names;
    while (at_ == bytes_.size() || bytes_[at_] != '@') {
        size_t const lineAt = at_;
        takeRegistryLine();
        if (!names.insert(typeNames_.back()).second) {
            throw Fault{lineAt, "the name of type " + std::to_string(numTypes() - 1) + " stands twice"};
        }
    }
    if (numTypes() == endTypeNumber) {
        throw Fault{at_, "the registry has no " + std::string(endTypeName)};
    }
    expect("@\n", "the end line of the registry is not complete");
}

// A line "%4d %s\n" with the numbers from 0 on.
void PacketFile::takeRegistryLine() {
    size_t const lineAt = at_;
    size_t const newline = bytes_.substr(at_, maxRegistryLine).find('\n');
    if (newline == bytes_.npos) {
        bool const cut = bytes_.size() - at_ < maxRegistryLine;
        throw cut ? Fault{bytes_.size(), "the file ends inside the registry"}
                  : Fault{lineAt, "a line of the registry is longer than 95 bytes"};
    }
    std::string_view const line = bytes_.substr(at_, newline);
    char columns[16];
    int const width = std::snprintf(columns, sizeof columns, "%4d ", numTypes());
    if (!line.starts_with(std::string_view(columns, static_cast<size_t>(width)))) {
        throw Fault{lineAt, "a line of the registry does not begin with the number " + std::to_string(numTypes())};
    }
    std::string_view const name = line.substr(static_cast<size_t>(width));
    at_ += static_cast<size_t>(width);
    if (name.empty()) {
        throw Fault{at_, "a type has no name"};
    }
    if (size_t const white = static_cast<size_t>(std::find_if(name.begin(), name.end(), isWhite) - name.begin());
        white != name.size()) {
        throw Fault{at_ + white, "there is white space in the name of a type"};
    }
    if (name.size() > maxTypeName) {
        throw Fault{at_, "the name of a type is longer than 83 bytes"};
    }
    static constexpr std::string_view fixedNames[] = {stringTypeName, endTypeName};
    if (numTypes() < 2 && name != fixedNames[numTypes()]) {
        throw Fault{at_, "type " + std::to_string(numTypes()) + " is not " + std::string(fixedNames[numTypes()])};
    }
    at_ += name.size() + 1;
    typeNames_.append(name);
}

std::int64_t PacketFile::load32(size_t at) const {
    std::uint32_t value = 0;
    for (size_t i = 0; i < 4; ++i) {
        auto const byte = static_cast<unsigned char>(bytes_[at + (littleEndian_ ? 3 - i : i)]);
        value = value << 8 | byte;
    }
    return static_cast<std::int32_t>(value);
}

bool PacketFile::next(Packet & packet) {
    if (ended_) {
        return false;
    }
    if (at_ == bytes_.size()) {
        throw Fault{at_, "the file ends without an end packet"};
    }
    packet.offset = at_;
    if (isBinary()) {
        takeBinaryPacket(packet);
    } else {
        takeAsciiPacket(packet);
    }
    packet.size = at_ - packet.offset;
    progress_.set(static_cast<double>(at_) / static_cast<double>(bytes_.size()));
    if (isEnd(packet)) {
        checkEndPacket(packet);
        ended_ = true;
    }
    return true;
}

void PacketFile::takeBinaryPacket(Packet & packet) {
    size_t const frame = at_;
    if (bytes_.size() - frame < binaryFrameSize) {
        throw Fault{bytes_.size(), "the file ends inside the frame of a packet"};
    }
    packet.type = load32(frame);
    std::int64_t const flag = load32(frame + 4);
    std::int64_t const size = load32(frame + 8);
    packet.hasReference = flag == 1;
    checkFrame(packet, flag, frame, frame + 4);
    size_t const left = bytes_.size() - frame - binaryFrameSize;
    if (size < 0) {
        throw Fault{frame + 8, "the size of a packet is negative"};
    }
    if (static_cast<std::uint64_t>(size) > left) {
        throw Fault{frame + 8, "a packet of " + std::to_string(size) + " bytes has only " + std::to_string(left) +
                                   " left in the file"};
    }
    packet.bodyOffset = frame + binaryFrameSize;
    packet.body = bytes_.substr(packet.bodyOffset, static_cast<size_t>(size));
    at_ = packet.bodyOffset + packet.body.size();
}

void PacketFile::takeAsciiPacket(Packet & packet) {
    expect("{ ", "a packet does not begin with \"{ \"");
    size_t const typeAt = at_;
    packet.type = takeNumber("the type of a packet");
    expect(" ", "there is no blank behind the type of a packet");
    size_t const flagAt = at_;
    int const flag = takeNumber("the reference flag");
    packet.hasReference = flag == 1;
    checkFrame(packet, flag, typeAt, flagAt);
    expect(" ", "there is no blank behind the reference flag");
    packet.bodyOffset = at_;
    size_t const brace = findFrameEnd(bytes_, at_);
    if (brace == bytes_.npos) {
        throw Fault{packet.offset, "a packet has no closing brace"};
    }
    packet.body = bytes_.substr(at_, brace - at_);
    at_ = brace + 1;
    expect("\n", "there is no newline behind the closing brace of a packet");
}

void PacketFile::checkFrame(Packet const & packet, std::int64_t flag, size_t typeAt, size_t flagAt) const {
    if (packet.type < 0 || (numTypes() > 0 && packet.type >= numTypes())) {
        throw Fault{typeAt, "type " + std::to_string(packet.type) + " is not in the registry"};
    }
    if (flag != 0 && flag != 1) {
        throw Fault{flagAt, "the reference flag is neither 0 nor 1"};
    }
}

bool PacketFile::isEnd(Packet const & packet) const { return packet.type == endTypeNumber; }

void PacketFile::checkEndPacket(Packet const & packet) const {
    if (packet.hasReference) {
        throw Fault{packet.offset, "the end packet has a reference"};
    }
    if (!packet.body.empty()) {
        throw Fault{packet.bodyOffset, "the end packet has a body"};
    }
}
