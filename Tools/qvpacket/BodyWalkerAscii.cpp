#include "BodyWalker.h"

#include "Base/Containers/qvVector.h"

#include "Fault.h"
#include "Text.h"

#include <charconv>
#include <string>
#include <utility>

namespace {

using std::size_t;

constexpr std::string_view chunkStart = "\n  [ ";
constexpr std::string_view subPacketStart = "\n  < ";

bool isEscaped(char c) { return std::string_view("\"<>[\\]{}").find(c) != std::string_view::npos; }

size_t numDigits(std::string_view text) {
    size_t const end = text.find_first_not_of("0123456789");
    return end == text.npos ? text.size() : end;
}

bool isInteger(std::string_view text) {
    text.remove_prefix(text.starts_with('-') ? 1 : 0);
    return !text.empty() && numDigits(text) == text.size();
}

// As "%g" prints: digits, perhaps with a fraction and an exponent of two digits at least.
bool isReal(std::string_view text) {
    text.remove_prefix(text.starts_with('-') ? 1 : 0);
    if (text == "inf" || text == "nan") {
        return true;
    }
    size_t count = numDigits(text);
    if (count == 0) {
        return false;
    }
    text.remove_prefix(count);
    if (text.starts_with('.')) {
        count = numDigits(text.substr(1));
        if (count == 0) {
            return false;
        }
        text.remove_prefix(1 + count);
    }
    if (text.starts_with("e+") || text.starts_with("e-")) {
        text.remove_prefix(2);
        return text.size() >= 2 && numDigits(text) == text.size();
    }
    return text.empty();
}

bool fits(FieldType const & type, std::string_view text) {
    char const * const end = text.data() + text.size();
    if (type.low < 0) {
        std::int64_t value = 0;
        bool const good = std::from_chars(text.data(), end, value).ec == std::errc();
        return good && value >= type.low && (value < 0 || static_cast<std::uint64_t>(value) <= type.high);
    }
    std::uint64_t value = 0;
    bool const good = std::from_chars(text.data(), end, value).ec == std::errc();
    return good && value <= type.high;
}

class AsciiWalk {
public:
    AsciiWalk(PacketFile const & file, Packet const & packet, BodyVisitor & visitor)
        : text_(packet.body), base_(packet.bodyOffset), debug_(file.isDebug()), visitor_(visitor) {}

    void run(bool hasReference) {
        if (hasReference) {
            takePacketReference();
        }
        while (at_ < text_.size()) {
            step();
        }
        if (!open_.empty()) {
            throw Fault{base_ + open_.back().at, std::string("a ") + nameOf(open_.back().container) + " has no end"};
        }
    }

private:
    struct Open {
        size_t at;
        Container container;
    };

    [[noreturn]] void fail(size_t at, std::string reason) const { throw Fault{base_ + at, std::move(reason)}; }

    void step() {
        switch (text_[at_]) {
        case '\n':
            enter();
            break;
        case ']':
            leave(Container::chunk, "a ] without its [");
            break;
        case '>':
            leave(Container::subPacket, "a > without its <");
            break;
        default:
            if (debug_) {
                takeTaggedField();
            } else if (text_[at_] == '"') {
                takeString();
            } else {
                std::string_view const number = takeToken();
                if (!isReal(number)) {
                    fail(at_ - number.size() - 1, "a field is neither a number nor a string");
                }
                visitor_.untypedNumber(number);
            }
        }
    }

    void enter() {
        Container container = Container::chunk;
        if (text_.substr(at_).starts_with(subPacketStart)) {
            container = Container::subPacket;
        } else if (!text_.substr(at_).starts_with(chunkStart)) {
            fail(at_, "a newline does not begin a chunk or a sub-packet");
        }
        if (container == Container::chunk && !open_.empty() && open_.back().container == Container::chunk) {
            fail(at_, "a chunk stands directly in a chunk");
        }
        open_.append({at_, container});
        at_ += chunkStart.size();
        visitor_.enter(container);
    }

    void leave(Container container, char const * unbalanced) {
        if (open_.empty() || open_.back().container != container) {
            fail(at_, unbalanced);
        }
        ++at_;
        takeBlank();
        open_.pop_back();
        visitor_.leave(container);
    }

    void takeBlank() {
        if (at_ == text_.size() || text_[at_] != ' ') {
            fail(at_, "there is no blank behind a field");
        }
        ++at_;
    }

    // Up to the next blank, behind which the position is then.
    std::string_view takeToken() {
        size_t const begin = at_;
        while (at_ < text_.size() && text_[at_] != ' ' && text_[at_] != '\n' && !isEscaped(text_[at_])) {
            ++at_;
        }
        std::string_view const token = text_.substr(begin, at_ - begin);
        if (token.empty()) {
            fail(begin, "there is no field where one should be");
        }
        takeBlank();
        return token;
    }

    void takeTaggedField() {
        FieldType const * const type = fieldTypeOf(text_[at_]);
        if (!type) {
            fail(at_, "\"" + printable(text_.substr(at_, 1)) + "\" is not the tag of a field");
        }
        ++at_;
        switch (type->kind) {
        case FieldKind::integer:
        case FieldKind::real:
            visitor_.number(*type, takeTypedNumber(*type));
            break;
        case FieldKind::text:
            if (at_ == text_.size() || text_[at_] != '"') {
                fail(at_, "there is no string behind the tag of a CString");
            }
            takeString();
            break;
        case FieldKind::reference:
            takeReferenceNumber(*type, false);
            break;
        case FieldKind::array:
            visitor_.array(*type);
            break;
        }
    }

    std::string_view takeTypedNumber(FieldType const & type) {
        size_t const begin = at_;
        std::string_view const number = takeToken();
        bool const wellFormed = type.kind == FieldKind::real ? isReal(number) : isInteger(number);
        if (!wellFormed) {
            fail(begin, std::string("what stands behind the tag of a field is no ") + type.name);
        }
        if (type.kind == FieldKind::integer && !fits(type, number)) {
            fail(begin, "a number does not fit a field of type " + std::string(type.name));
        }
        return number;
    }

    // The UInt of a reference, with its own tag in the debug form.
    void takeReferenceNumber(FieldType const & reference, bool ofPacket) {
        FieldType const & uint = *fieldTypeOf('I');
        if (debug_) {
            if (at_ == text_.size() || text_[at_] != uint.tag) {
                fail(at_, "there is no UInt behind the tag of a Reference");
            }
            ++at_;
        }
        size_t const begin = at_;
        std::string_view const number = takeTypedNumber(uint);
        std::uint64_t value = 0;
        std::from_chars(number.data(), number.data() + number.size(), value);
        checkReference(base_ + begin, value, ofPacket);
        visitor_.number(reference, number);
    }

    void takePacketReference() {
        FieldType const & reference = *fieldTypeOf('r');
        bool const tagged = at_ < text_.size() && text_[at_] == reference.tag;
        bool const digit = at_ < text_.size() && numDigits(text_.substr(at_, 1)) == 1;
        if (!(debug_ ? tagged : digit)) {
            fail(at_, "a packet does not begin with the reference that its frame tells of");
        }
        if (debug_) {
            ++at_;
        }
        takeReferenceNumber(reference, true);
    }

    void takeString() {
        size_t const quote = at_;
        unescaped_.clear();
        for (++at_; at_ < text_.size() && text_[at_] != '"'; ++at_) {
            bool const escaped = isEscaped(text_[at_]);
            if (escaped && text_[at_] != '\\') {
                fail(at_, "a character in a string lacks its backslash");
            }
            if (escaped && (++at_ == text_.size() || !isEscaped(text_[at_]))) {
                fail(at_ - 1, "a backslash in a string protects nothing");
            }
            if (text_[at_] == 0) {
                fail(at_, "there is a zero byte in a string");
            }
            unescaped_ += text_[at_];
        }
        if (at_ == text_.size()) {
            fail(quote, "a string has no end");
        }
        ++at_;
        takeBlank();
        visitor_.string(unescaped_);
    }

    std::string_view const text_;
    size_t const base_; // where the text stands in the file
    bool const debug_;
    BodyVisitor & visitor_;
    size_t at_ = 0;
    qv::vector<Open> open_;
    std::string unescaped_;
};

} // namespace

void walkAsciiBody(PacketFile const & file, Packet const & packet, BodyVisitor & visitor) {
    AsciiWalk(file, packet, visitor).run(packet.hasReference);
}
