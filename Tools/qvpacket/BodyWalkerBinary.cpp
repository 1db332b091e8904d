#include "BodyWalker.h"

#include "Base/Containers/qvVector.h"

#include "Fault.h"
#include "Text.h"

#include <bit>
#include <charconv>
#include <string>
#include <utility>

namespace {

using std::size_t;

constexpr char chunkMarker = ',';
constexpr char subPacketMarker = '.';

class BinaryWalk {
public:
    BinaryWalk(PacketFile const & file, Packet const & packet, BodyVisitor & visitor)
        : body_(packet.body), base_(packet.bodyOffset), end_(packet.body.size()), file_(file), visitor_(visitor) {}

    void run(bool hasReference) {
        if (hasReference) {
            takePacketReference();
        }
        if (!file_.isDebug()) {
            takeRest();
            return;
        }
        for (;;) {
            if (at_ < end_) {
                step();
            } else if (!open_.empty()) {
                leave();
            } else {
                return;
            }
        }
    }

private:
    struct Open {
        Container container;
        size_t outerEnd;
    };

    [[noreturn]] void fail(size_t at, std::string reason) const { throw Fault{base_ + at, std::move(reason)}; }

    void step() {
        switch (body_[at_]) {
        case chunkMarker:
            enter(Container::chunk);
            break;
        case subPacketMarker:
            enter(Container::subPacket);
            break;
        default:
            takeTaggedField();
        }
    }

    void enter(Container container) {
        if (container == Container::chunk && !open_.empty() && open_.back().container == Container::chunk) {
            fail(at_, "a chunk stands directly in a chunk");
        }
        FieldType const & sizeType = *fieldTypeOf('i');
        size_t const sizeAt = at_ + 1;
        if (sizeAt == end_ || body_[sizeAt] != sizeType.tag) {
            fail(sizeAt, std::string("the size of a ") + nameOf(container) + " has no tag");
        }
        at_ = sizeAt + 1;
        auto const size = static_cast<std::int64_t>(takeInteger(sizeType));
        if (size < static_cast<std::int64_t>(at_ - sizeAt)) {
            fail(sizeAt, std::string("the size of a ") + nameOf(container) + " does not cover itself");
        }
        if (static_cast<std::uint64_t>(size) > end_ - sizeAt) {
            fail(sizeAt, std::string("a ") + nameOf(container) + " reaches past the end of what it stands in");
        }
        open_.append({container, end_});
        end_ = sizeAt + static_cast<size_t>(size);
        visitor_.enter(container);
    }

    void leave() {
        Open const left = open_.back();
        open_.pop_back();
        end_ = left.outerEnd;
        visitor_.leave(left.container);
    }

    void takeTaggedField() {
        FieldType const * const type = fieldTypeOf(body_[at_]);
        if (!type) {
            fail(at_, "\"" + printable(body_.substr(at_, 1)) + "\" is not the tag of a field");
        }
        ++at_;
        switch (type->kind) {
        case FieldKind::integer:
            takeIntegerField(*type);
            break;
        case FieldKind::real:
            takeReal(*type);
            break;
        case FieldKind::text:
            takeString();
            break;
        case FieldKind::reference:
            takeReferenceNumber(*type, false);
            break;
        case FieldKind::array:
            visitor_.array(*type);
            // Each Bool of an array has its own tag. Other elements are raw, and where they end the file does not tell.
            if (type->elementTag != 'b') {
                takeRest();
            }
            break;
        }
    }

    // What is left of the packet, or of the chunk or sub-packet that is open.
    void takeRest() {
        if (at_ < end_) {
            visitor_.bytes(base_ + at_, body_.substr(at_, end_ - at_));
        }
        at_ = end_;
    }

    // The bits of the next field, the most significant byte first whatever the order of the file.
    std::uint64_t takeBits(FieldType const & type) {
        auto const width = static_cast<size_t>(type.width);
        if (end_ - at_ < width) {
            fail(at_, std::string("a field of type ") + type.name + " is cut short");
        }
        std::uint64_t bits = 0;
        for (size_t i = 0; i < width; ++i) {
            size_t const place = file_.isLittleEndian() ? width - 1 - i : i;
            bits = bits << 8 | static_cast<unsigned char>(body_[at_ + place]);
        }
        at_ += width;
        return bits;
    }

    // With the sign carried up, where the type has one.
    std::uint64_t takeInteger(FieldType const & type) {
        int const unused = 64 - 8 * type.width;
        std::uint64_t const bits = takeBits(type) << unused;
        return type.low < 0 ? static_cast<std::uint64_t>(static_cast<std::int64_t>(bits) >> unused) : bits >> unused;
    }

    void takeIntegerField(FieldType const & type) {
        size_t const begin = at_;
        std::uint64_t const value = takeInteger(type);
        if (type.low == 0 && value > type.high) {
            fail(begin, "a number does not fit a field of type " + std::string(type.name));
        }
        tell(type, value);
    }

    void tell(FieldType const & type, std::uint64_t value) {
        visitor_.number(type, type.low < 0 ? std::to_string(static_cast<std::int64_t>(value)) : std::to_string(value));
    }

    void takeReal(FieldType const & type) {
        char text[64];
        std::uint64_t const bits = takeBits(type);
        std::to_chars_result const result =
            type.width == sizeof(float)
                ? std::to_chars(text, text + sizeof text, std::bit_cast<float>(static_cast<std::uint32_t>(bits)))
                : std::to_chars(text, text + sizeof text, std::bit_cast<double>(bits));
        visitor_.number(type, std::string_view(text, static_cast<size_t>(result.ptr - text)));
    }

    void takeString() {
        size_t const end = body_.substr(0, end_).find('\0', at_);
        if (end == body_.npos) {
            fail(at_, "a string has no end");
        }
        visitor_.string(body_.substr(at_, end - at_));
        at_ = end + 1;
    }

    // The UInt of a reference, with its own tag in the debug form.
    void takeReferenceNumber(FieldType const & reference, bool ofPacket) {
        FieldType const & uint = *fieldTypeOf('I');
        if (file_.isDebug()) {
            if (at_ == end_ || body_[at_] != uint.tag) {
                fail(at_, "there is no UInt behind the tag of a Reference");
            }
            ++at_;
        }
        size_t const begin = at_;
        std::uint64_t const value = takeInteger(uint);
        checkReference(base_ + begin, value, ofPacket);
        tell(reference, value);
    }

    void takePacketReference() {
        FieldType const & reference = *fieldTypeOf('r');
        bool const there = file_.isDebug() ? at_ < end_ && body_[at_] == reference.tag : end_ - at_ >= 4;
        if (!there) {
            fail(at_, "a packet does not begin with the reference that its frame tells of");
        }
        if (file_.isDebug()) {
            ++at_;
        }
        takeReferenceNumber(reference, true);
    }

    std::string_view const body_;
    size_t const base_; // where the body stands in the file
    size_t at_ = 0;
    size_t end_; // of the innermost chunk or sub-packet, or of the body
    PacketFile const & file_;
    BodyVisitor & visitor_;
    qv::vector<Open> open_;
};

} // namespace

void walkBinaryBody(PacketFile const & file, Packet const & packet, BodyVisitor & visitor) {
    BinaryWalk(file, packet, visitor).run(packet.hasReference);
}
