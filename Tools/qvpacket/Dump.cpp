#include "Commands.h"

#include "BodyWalker.h"

#include <algorithm>

namespace {

using std::size_t;

constexpr size_t bytesPerLine = 16;
constexpr size_t offsetDigits = 8;
// Deeper nesting is not indented any further, so that a line has a bounded length whatever the file says.
constexpr size_t maxIndentedDepth = 40;

class Dumper : public BodyVisitor {
public:
    explicit Dumper(Output & output) : output_(output) {}

    void number(FieldType const & type, std::string_view text) override {
        startLine(type.tag);
        output_ << type.name << " " << text << "\n";
    }

    void untypedNumber(std::string_view text) override {
        startLine(0);
        output_ << text << "\n";
    }

    void string(std::string_view text) override {
        startLine(0);
        output_ << "CString \"" << printable(text) << "\"\n";
    }

    void array(FieldType const & type) override {
        startLine(0);
        output_ << type.name << "\n";
        elementTag_ = type.elementTag;
    }

    void bytes(size_t offset, std::string_view bytes) override {
        for (; !bytes.empty(); bytes.remove_prefix(std::min(bytesPerLine, bytes.size()))) {
            indent(elementTag_ ? 1 : 0);
            printBytes(offset, bytes.substr(0, bytesPerLine));
            offset += bytesPerLine;
        }
        elementTag_ = 0;
    }

    void enter(Container container) override {
        startLine(0);
        ++depth_;
        output_ << nameOf(container);
        if (depth_ > maxIndentedDepth) {
            output_ << " at depth " << depth_;
        }
        output_ << "\n";
    }

    void leave(Container container) override {
        elementTag_ = 0;
        if (depth_ > maxIndentedDepth) {
            output_.blanks(2 * (maxIndentedDepth + 1));
            output_ << "end of the " << nameOf(container) << " at depth " << depth_ << "\n";
        }
        --depth_;
    }

private:
    // The elements of an array stand one step further in, up to the first field that is none.
    void startLine(char tag) {
        if (tag == 0 || tag != elementTag_) {
            elementTag_ = 0;
        }
        indent(elementTag_ ? 1 : 0);
    }

    void indent(size_t more) { output_.blanks(2 * (std::min(depth_, maxIndentedDepth) + 1 + more)); }

    void printBytes(size_t offset, std::string_view bytes) {
        output_.hexadecimal(offset, offsetDigits);
        output_ << " ";
        for (char const byte : bytes) {
            output_ << " ";
            output_.hexadecimal(static_cast<unsigned char>(byte), 2);
        }
        output_.blanks(3 * (bytesPerLine - bytes.size()) + 2);
        std::string text(bytes);
        std::replace_if(
            text.begin(), text.end(), [](char c) { return c < 0x20 || c > 0x7E; }, '.');
        output_ << text << "\n";
    }

    Output & output_;
    size_t depth_ = 0;
    char elementTag_ = 0; // of the array whose elements may follow, 0 for none
};

} // namespace

void dump(PacketFile & file, Output & output) {
    output << nameOfForm(file) << ", " << nameOfByteOrder(file) << ", version " << static_cast<size_t>(file.version())
           << "\n";
    for (int type = 0; type < file.numTypes(); ++type) {
        output << "type " << static_cast<size_t>(type) << " " << nameOfType(file, type) << "\n";
    }
    Packet packet;
    while (file.next(packet)) {
        output << packet.offset << ": " << nameOfType(file, packet.type) << ", " << packet.size << " bytes\n";
        Dumper dumper(output);
        walkBody(file, packet, dumper);
    }
}
