#include "Base/DataFiles/ioPacketRegistry.h"

#include "Base/Containers/qvMap.h"
#include "Base/Containers/qvSet.h"
#include "Base/Containers/qvVector.h"
#include "Base/DataFiles/Internal/ioNumberText.h"
#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/DataFiles/ioBufferedStreamOutput.h"
#include "Base/DataFiles/ioPacketType.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace {

// A line of a registry is a number in four columns, a blank, the name and the newline. The number may need more
// columns in a file of many types.
constexpr std::size_t maxNameLength = 83;
constexpr int maxLineLength = 10 + 1 + int{maxNameLength} + 1;

struct TextLess {
    bool operator()(char const * a, char const * b) const { return std::strcmp(a, b) < 0; }
};

using ioNumberText::isWhite;

bool isTypeName(char const * name) {
    std::size_t length = 0;
    for (; name[length]; ++length) {
        if (isWhite(name[length]) || length == maxNameLength) {
            return false;
        }
    }
    return length > 0;
}

// What "%d %s" takes from a line: a number and a name that ends at white space. False where one is missing.
bool parseLine(char * line, int & number, char const *& name) {
    char const * const end = line + std::strlen(line);
    char const * next = nullptr;
    number = ioNumberText::parseInt(line, end, &next);
    if (next == line) {
        return false;
    }
    char * first = line + (next - line);
    while (isWhite(*first)) {
        ++first;
    }
    char * last = first;
    while (*last && !isWhite(*last)) {
        ++last;
    }
    *last = 0;
    name = first;
    return isTypeName(first);
}

} // namespace

class ioPacketRegistryImpl {
public:
    // The map owns the types in it, under the names that they hold themselves.
    qv::vector<ioPacketType *> byNumber;
    qv::map<char const *, ioPacketType *, TextLess> byName;
    qv::vector<ioPacketType *> refused;
};

ioPacketRegistry::ioPacketRegistry(bool fromFile)
    : impl_(new ioPacketRegistryImpl), initialised_(false), fromFile_(fromFile) {}

ioPacketRegistry::~ioPacketRegistry() {
    for (auto const & entry : impl_->byName) {
        delete entry.second;
    }
    for (ioPacketType * type : impl_->refused) {
        delete type;
    }
    delete impl_;
}

// False when the type has no usable name, or a name that another type holds.
bool ioPacketRegistry::enterName(ioPacketType * type) {
    if (!isTypeName(type->getName())) {
        return false;
    }
    ioPacketType * const entered = lookup(type->getName());
    if (!entered) {
        impl_->byName[type->getName()] = type;
    }
    return !entered || entered == type;
}

void ioPacketRegistry::registerNumber(ioPacketType * type) {
    if (type->id_ == -1) {
        impl_->byNumber.append(type);
        type->id_ = impl_->byNumber.size() - 1;
    }
}

void ioPacketRegistry::supportedType(ioPacketType * type) {
    if (!type) {
        return;
    }
    if (!enterName(type)) {
        auto const & refused = impl_->refused;
        if (std::find(refused.begin(), refused.end(), type) == refused.end()) {
            impl_->refused.append(type);
        }
    } else if (!fromFile_) {
        registerNumber(type);
    }
}

void ioPacketRegistry::init() {
    if (initialised_) {
        return;
    }
    supportedType(new ioPacketString);
    supportedType(new ioPacketEOF);
    registerAllTypes();
    initialised_ = true;
}

ioPacketType * ioPacketRegistry::lookup(int id) const {
    return id >= 0 && id < impl_->byNumber.size() ? impl_->byNumber[id] : nullptr;
}

ioPacketType * ioPacketRegistry::lookup(char const * name) const {
    auto const found = name ? impl_->byName.find(name) : impl_->byName.end();
    return found != impl_->byName.end() ? found->second : nullptr;
}

void ioPacketRegistry::writeRegistry(ioBufferedStreamOutput & stream, bool withTypes) const {
    if (withTypes) {
        for (ioPacketType const * type : impl_->byNumber) {
            stream.printf("%4d %s\n", type->getId(), type->getName());
        }
    }
    stream.writeString("@\n");
}

// Nothing is numbered or entered before the whole registry has been found good.
ioStatus ioPacketRegistry::readRegistry(ioBufferedStreamInput & stream) {
    char line[maxLineLength + 1];
    qv::vector<ioPacketType *> types;
    qv::set<char const *, TextLess> names;
    qv::vector<std::unique_ptr<ioPacketType>> unknown;
    int previous = 0;
    int numNew = 0;
    for (int place = 0;; ++place) {
        stream.readLine(line, sizeof line);
        if (!stream.good()) {
            return ioFailed;
        }
        if (line[0] == '@') {
            break;
        }
        int number = 0;
        char const * name = nullptr;
        bool const whole = std::strchr(line, '\n') != nullptr;
        if (!whole || !parseLine(line, number, name)) {
            return ioBadData;
        }
        if (place > 0 && (previous == INT32_MAX || number != previous + 1)) {
            return ioBadData;
        }
        previous = number;
        ioPacketType * type = lookup(name);
        if (!type) {
            unknown.append(std::make_unique<ioPacketType>(name));
            type = unknown.back().get();
        }
        int const id = type->getId() >= 0 ? type->getId() : impl_->byNumber.size() + numNew++;
        if (id != place || !names.insert(type->getName()).second) {
            return ioBadData;
        }
        types.append(type);
    }
    for (auto & type : unknown) {
        enterName(type.release());
    }
    for (ioPacketType * type : types) {
        registerNumber(type);
    }
    return ioGood;
}

ioSimplePacketRegistry::ioSimplePacketRegistry(bool fromFile) : ioPacketRegistry(fromFile) {}

ioSimplePacketRegistry::~ioSimplePacketRegistry() = default;

void ioSimplePacketRegistry::registerAllTypes() { signal_.emit(this); }

void ioSimplePacketRegistry::add(char const * name) { supportedType(new ioSimplePacketType(name)); }

void ioSimplePacketRegistry::add(char const * name, void (*function)()) {
    supportedType(new ioSimplePacketType(name, function ? new ioGlobalReadCallback(function) : nullptr));
}
