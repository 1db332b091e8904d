// What the tests of packet files share: a registry made of functions, a client that counts, fatal errors as
// exceptions, and writers for the byte order of the other kind of machine.

#ifndef PacketFileSupport_h
#define PacketFileSupport_h

#include "Base/DataFiles/Internal/ioWriteContextAscii.h"
#include "Base/DataFiles/Internal/ioWriteContextBinary.h"
#include "Base/DataFiles/Internal/ioWriteContextDebug.h"
#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/DataFiles/ioBufferedStreamOutput.h"
#include "Base/DataFiles/ioClientContext.h"
#include "Base/DataFiles/ioPacketFileError.h"
#include "Base/DataFiles/ioPacketRegistry.h"
#include "Base/DataFiles/ioPacketType.h"
#include "Base/DataFiles/ioReadContext.h"
#include "Base/DataFiles/ioReferenceMap.h"
#include "Base/DataFiles/ioWriteContext.h"
#include "Support/ScratchDirectory.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace qvTest {

using ReadFunction = std::function<void(ioReadContext &)>;

// A type that reads by a function and remembers what was reported to it.
class FunctionType : public ioPacketType {
public:
    FunctionType(char const * name, ReadFunction read) : ioPacketType(name), read_(std::move(read)) {}
    void read(ioClientReadContext & client) override {
        if (read_) {
            read_(client.getReadContext());
        } else {
            ioPacketType::read(client);
        }
    }
    void memoryNotReferenced(ioClientReadContext &, void * memory) override { unreferenced.push_back(memory); }
    void hasUnresolvedPointer(ioClientReadContext &, void * location, int value) override {
        unresolved.emplace_back(location, value);
    }

    std::vector<void *> unreferenced;
    std::vector<std::pair<void *, int>> unresolved;

private:
    ReadFunction read_;
};

class TestRegistry : public ioPacketRegistry {
public:
    explicit TestRegistry(bool fromFile) : ioPacketRegistry(fromFile) {}
    TestRegistry & with(char const * name, ReadFunction read = {}) {
        types_.push_back(new FunctionType(name, std::move(read)));
        return *this;
    }
    ~TestRegistry() override {
        if (!handedOver_) {
            std::for_each(types_.begin(), types_.end(), [](FunctionType * type) { delete type; });
        }
    }
    void registerAllTypes() override {
        handedOver_ = true;
        for (FunctionType * type : types_) {
            supportedType(type);
        }
    }
    FunctionType & type(std::size_t index) { return *types_[index]; }

private:
    std::vector<FunctionType *> types_;
    bool handedOver_ = false;
};

// While it lives, a fatal error throws what was reported instead of ending the process.
class FatalErrorsThrow {
public:
    struct Thrown {
        std::string text;
    };
    FatalErrorsThrow() {
        text().clear();
        ioPacketFileErrorInit([](char * message) { text() += message; });
        ioPacketFileAbortInit([] { throw Thrown{text()}; });
    }
    ~FatalErrorsThrow() {
        ioPacketFileErrorInit(nullptr);
        ioPacketFileAbortInit(nullptr);
    }

private:
    static std::string & text() {
        static std::string reported;
        return reported;
    }
};

// What a fatal error in the function reports, "" when there is none.
template <typename Function>
std::string fatalTextOf(Function function) {
    FatalErrorsThrow const hook;
    try {
        function();
    } catch (FatalErrorsThrow::Thrown const & thrown) {
        return thrown.text;
    }
    return "";
}

template <typename T>
T reversedBytes(T value) {
    char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    std::reverse(bytes, bytes + sizeof value);
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

// Writes fields as the other kind of machine does. The frames and the header are turned round behind endFile.
class SwappedWriter : public ioWriteContextBinary {
public:
    using ioWriteContextBinary::ioWriteContextBinary;
    bool writesNativeArrays() const override { return false; }

#define QV_SWAP(name, type, tag, arrayTag)                                                                             \
    void write##name(type value) override { ioWriteContextBinary::write##name(reversedBytes(value)); }                 \
    void write##name##Array(type const * values, int count) override {                                                 \
        std::vector<type> swapped(values, values + std::max(count, 0));                                                \
        std::transform(swapped.begin(), swapped.end(), swapped.begin(), reversedBytes<type>);                          \
        ioWriteContextBinary::write##name##Array(swapped.data(), count);                                               \
    }
    IO_ORDERED_FIELD_TYPES(QV_SWAP)
#undef QV_SWAP
};

// The form of a file, with the byte order where that makes a difference.
enum class Form { ascii, binary, asciiDebug, binaryDebug, binarySwapped, binaryDebugSwapped };

// What a failing test names it.
inline std::ostream & operator<<(std::ostream & to, Form form) {
    char const * const names[] = {"Ascii",       "Binary",        "AsciiDebug",
                                  "BinaryDebug", "BinarySwapped", "BinaryDebugSwapped"};
    return to << names[static_cast<int>(form)];
}

inline constexpr Form allForms[] = {Form::ascii,       Form::binary,        Form::asciiDebug,
                                    Form::binaryDebug, Form::binarySwapped, Form::binaryDebugSwapped};

inline bool isAscii(Form form) { return form == Form::ascii || form == Form::asciiDebug; }
inline bool isSwapped(Form form) { return form == Form::binarySwapped || form == Form::binaryDebugSwapped; }
inline bool isDebug(Form form) {
    return form == Form::asciiDebug || form == Form::binaryDebug || form == Form::binaryDebugSwapped;
}

inline ioWriteMethod methodOf(Form form) {
    switch (form) {
    case Form::ascii:
        return ioWriteAscii;
    case Form::asciiDebug:
        return ioWriteAsciiDebug;
    case Form::binary:
    case Form::binarySwapped:
        return ioWriteBinary;
    default:
        return ioWriteBinaryDebug;
    }
}

inline std::unique_ptr<ioWriteContext> makeWriter(ioBufferedStreamOutput & stream, Form form,
                                                  ioPacketRegistry * registry) {
    std::unique_ptr<ioWriteContext> writer;
    if (form == Form::binarySwapped) {
        writer = std::make_unique<SwappedWriter>(stream);
    } else if (form == Form::binaryDebugSwapped) {
        writer = std::make_unique<ioWriteContextDebug<SwappedWriter, ioWriteBinaryDebug>>(stream);
    } else {
        return std::unique_ptr<ioWriteContext>(ioWriteContextAlloc(stream, methodOf(form), registry));
    }
    writer->associateRegistry(registry);
    return writer;
}

// Where the packets of a file begin.
inline std::size_t packetsAt(std::string const & file) {
    std::size_t const headerEnd = file.find("@\n", 3);
    return file.find("@\n", headerEnd + 2) + 2;
}

// The size of the binary packet at this place.
inline std::size_t packetSize(std::string const & file, std::size_t at, Form form) {
    std::int32_t size = 0;
    std::memcpy(&size, &file[at + 8], sizeof size);
    return 12 + static_cast<std::size_t>(isSwapped(form) ? reversedBytes(size) : size);
}

// Turns the frames of a file that SwappedWriter has written, and the byte order in its header.
inline void turnFrames(std::string & file) {
    file[file.find('\n', 3) + 1] = '0';
    for (std::size_t at = packetsAt(file); at + 12 <= file.size();) {
        std::int32_t frame[3];
        std::memcpy(frame, &file[at], sizeof frame);
        std::size_t const size = static_cast<std::size_t>(frame[2]);
        for (std::int32_t & value : frame) {
            value = reversedBytes(value);
        }
        std::memcpy(&file[at], frame, sizeof frame);
        at += sizeof frame + size;
    }
}

// Writes one file through the function and gives its bytes.
inline std::string writeFile(Form form, ioPacketRegistry & registry, std::function<void(ioWriteContext &)> const & fill,
                             ioStatus expected = ioGood) {
    ScratchDirectory const scratch;
    std::string const path = scratch.path("file");
    ioBufferedStreamOutput stream;
    stream.openFile(wide(path));
    auto const writer = makeWriter(stream, form, &registry);
    writer->startFile();
    fill(*writer);
    writer->endFile();
    stream.close();
    if (writer->getStatus() != expected || !stream.good()) {
        throw std::runtime_error("the file could not be written");
    }
    std::string bytes = bytesOf(path);
    if (isSwapped(form)) {
        turnFrames(bytes);
    }
    return bytes;
}

// The same, with types of these names.
inline std::string writeFile(Form form, std::initializer_list<char const *> types,
                             std::function<void(ioWriteContext &)> const & fill) {
    TestRegistry registry(false);
    for (char const * type : types) {
        registry.with(type);
    }
    return writeFile(form, registry, fill);
}

// A file with one packet, of the type "t".
inline std::string writePacket(Form form, std::function<void(ioWriteContext &)> const & fill) {
    return writeFile(form, {"t"}, [&](ioWriteContext & to) {
        to.startPacket("t", nullptr);
        fill(to);
        to.endPacket();
    });
}

// Remembers what packets defined.
class CollectingClient : public ioClientReadContext {
public:
    using ioClientReadContext::ioClientReadContext;
    void postPacketRead() override {
        ioReadContext & context = getReadContext();
        if (void * const pointer = context.getReferenceDefinition(context.getPacketReference())) {
            defined.insert(pointer);
        }
    }
    // Frees the texts of string packets, which are all that packets defined but the client's own object.
    void freeTexts(void * own) {
        defined.erase(own);
        std::for_each(defined.begin(), defined.end(), [](void * text) { std::free(text); });
    }
    std::set<void *> defined;
};

// A reader on bytes, with its stream and file.
class Reader {
public:
    Reader(std::string const & bytes, ioPacketRegistry & registry) { open(bytes, registry); }
    // The function reads the packets of the type "t".
    Reader(std::string const & bytes, ReadFunction read) { open(bytes, types.with("t", std::move(read))); }
    // -1 when there was no header.
    int read() { return context ? int{context->readFile(*client)} : -1; }

private:
    void open(std::string const & bytes, ioPacketRegistry & registry) {
        writeBytes(scratch_.path("file"), bytes);
        stream.openFile(wide(scratch_.path("file")));
        context.reset(ioReadContextAlloc(stream, &registry));
        if (context) {
            client = std::make_unique<CollectingClient>(*context);
        }
    }

    ScratchDirectory scratch_;

public:
    TestRegistry types{true};
    ioBufferedStreamInput stream;
    std::unique_ptr<ioReadContext> context;
    std::unique_ptr<CollectingClient> client;
};

} // namespace qvTest

#endif
