#include "DocumentReader.h"

#include "DocumentPackets.h"

#include "Base/Containers/qvMap.h"
#include "Base/Containers/qvSet.h"
#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/DataFiles/ioClientContext.h"
#include "Base/DataFiles/ioLargeArray.h"
#include "Base/DataFiles/ioPacketRegistry.h"
#include "Base/DataFiles/ioPacketType.h"
#include "Base/DataFiles/ioReadContext.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <type_traits>

namespace mesh {

namespace {

using qvString::CString;

// Builds the document from the packets as they come. A reference in a file is a bare number, and its object is whatever
// the file says, so no pointer is followed before it is known to lead to an object of the right kind.
class DocumentReader : public ioClientReadContext {
public:
    DocumentReader(ioReadContext & context, Document & document, std::int64_t fileSize)
        : ioClientReadContext(context), context_(context), document_(document), budget_(fileSize / leastBytes) {}

    ~DocumentReader() override {
        for (void * text : texts_)
            std::free(text);
    }

    // Behind the packet's read: the texts that a file defines are found here, since their packets are the library's.
    void postPacketRead() override {
        void * const object = context_.getReferenceDefinition(context_.getPacketReference());
        if (object && !kinds_.contains(object))
            texts_.insert(object);
    }

    void readRoot() {
        if (kinds_.contains(&document_))
            return context_.badPacket();
        define(&document_, Kind::document);
        document_.name = readName();
        context_.nextChunk();
        for (int left = readCount(); left > 0; --left) {
            char const * const library = context_.readCString();
            document_.materialLibraries.append(CString(library));
        }
        context_.nextChunk();
        readSizeOfValues(document_.positions);
        readSizeOf(document_.weights);
        readSizeOfValues(document_.textureCoordinates);
        readSizeOfValues(document_.normals);
        context_.nextChunk();
        readPointer(document_.firstMesh, Kind::mesh);
        readPointer(document_.firstMaterial, Kind::material);
    }

    void readMesh() {
        Mesh & mesh = document_.meshes.emplace_back();
        define(&mesh, Kind::mesh);
        mesh.name = CString(context_.readCString());
        readPointer(mesh.document, Kind::document);
        readPointer(mesh.next, Kind::mesh);
        context_.nextChunk();
        readPointer(mesh.firstGroup, Kind::group);
        readPointer(mesh.lastGroup, Kind::group);
    }

    void readGroup() {
        Group & group = document_.groups.emplace_back();
        define(&group, Kind::group);
        group.name = CString(context_.readCString());
        readPointer(group.mesh, Kind::mesh);
        readPointer(group.next, Kind::group);
        context_.nextChunk();
        readSizeOf(group.faceSizes);
        readSizeOf(group.corners);
        // The elements must not move any more: their pointers may still be waiting.
        group.uses.setSize(readCount());
        for (MaterialUse & use : group.uses) {
            context_.startSubPacket();
            readPointer(use.material, Kind::material);
            use.firstFace = context_.readInt();
            use.faceCount = context_.readInt();
            context_.endSubPacket();
        }
    }

    void readMaterial() {
        Material & material = document_.materials.emplace_back();
        define(&material, Kind::material);
        material.name = readName();
        readPointer(material.next, Kind::material);
        context_.nextChunk();
        material.users.setSize(readCount());
        for (Group *& user : material.users)
            readPointer(user, Kind::group);
    }

    void readPositions() { readParcel(&Document::positions); }
    void readWeights() { readParcel(&Document::weights); }
    void readTextureCoordinates() { readParcel(&Document::textureCoordinates); }
    void readNormals() { readParcel(&Document::normals); }
    void readFaceSizes() { readParcel(&Group::faceSizes); }
    void readCorners() { readParcel(&Group::corners); }

    void noteUnresolved() { unresolved_ = true; }

    // Behind the end of the file.
    CString findProblem() const {
        if (context_.getStatus() != ioGood)
            return "the file is damaged";
        if (!kinds_.contains(&document_))
            return "the file holds no document";
        if (unresolved_)
            return "a reference leads nowhere";
        for (Slot const & slot : slots_)
            if (void const * const object = slot.target(); object && kindOf(object) != slot.kind)
                return "a reference leads to an object of another kind";
        if (parcels_ != 0)
            return "an array is not complete";
        return findFault(document_);
    }

private:
    enum class Kind { none, document, mesh, group, material };

    // A pointer of the document, which the library fills in, perhaps later.
    struct Slot {
        void const * location;
        Kind kind;

        void const * target() const {
            void const * object;
            std::memcpy(&object, location, sizeof object);
            return object;
        }
    };

    // Nothing takes less in any form of file: an empty text in binary.
    static constexpr std::int64_t leastBytes = 1;

    void define(void * object, Kind kind) {
        kinds_.try_emplace(object, kind);
        context_.definePacketReference(object);
    }

    Kind kindOf(void const * object) const {
        auto const place = kinds_.find(object);
        return place == kinds_.end() ? Kind::none : place->second;
    }

    template <class T>
    void readPointer(T *& pointer, Kind kind) {
        context_.readReferenceUsage(&pointer, 0);
        slots_.append(Slot{&pointer, kind});
    }

    CString readName() {
        void * const text = context_.readReferenceUsage();
        if (texts_.contains(text))
            return CString(static_cast<char const *>(text));
        context_.badPacket();
        return CString();
    }

    // A number of things that the rest of the file must hold. All that are announced share one budget.
    int readCount() {
        int const count = context_.readInt();
        if (count < 0 || count > budget_) {
            context_.badPacket();
            return 0;
        }
        budget_ -= count;
        return count;
    }

    template <class T>
    void readSizeOf(qv::vector<T> & array) {
        int const count = readCount();
        array.setSize(count);
        expectParcels(count);
    }

    // The file counts numbers.
    template <class Value>
    void readSizeOfValues(qv::vector<Value> & values) {
        int const count = readCount();
        if (count % numbersPerValue != 0)
            return context_.badPacket();
        values.setSize(count / numbersPerValue);
        expectParcels(count);
    }

    void expectParcels(int count) { parcels_ += count / ioMaxParcelElements + (count % ioMaxParcelElements != 0); }

    template <class Owner, class T>
    void readParcel(qv::vector<T> Owner::*array) {
        // A parcel builds no object. One that claims to would wait for its definition for ever.
        if (context_.getPacketReference() != 0)
            return context_.badPacket();
        void * const owner = context_.readReferenceUsage();
        if (kindOf(owner) != (std::is_same_v<Owner, Document> ? Kind::document : Kind::group))
            return context_.badPacket();
        qv::vector<T> & elements = static_cast<Owner *>(owner)->*array;
        if constexpr (std::is_arithmetic_v<T>)
            ioReadArrayParcel(context_, elements.data(), elements.size());
        else
            ioReadArrayParcel(context_, numbersOf(elements), elements.size() * numbersPerValue);
        --parcels_;
    }

    ioReadContext & context_;
    Document & document_;
    std::int64_t budget_;
    std::int64_t parcels_ = 0; // that are still to come
    qv::map<void const *, Kind> kinds_;
    qv::set<void *> texts_; // from malloc, ours to free
    qv::vector<Slot> slots_;
    bool unresolved_ = false;
};

// A packet type that hands its packets to one operation of the reader.
class ReaderType : public ioPacketType {
public:
    using Method = void (DocumentReader::*)();

    ReaderType(char const * name, Method method) : ioPacketType(name), method_(method) {}

    void read(ioClientReadContext & client) override { (static_cast<DocumentReader &>(client).*method_)(); }
    void hasUnresolvedPointer(ioClientReadContext & client, void *, int) override {
        static_cast<DocumentReader &>(client).noteUnresolved();
    }

private:
    Method method_;
};

class ReaderRegistry : public ioPacketRegistry {
public:
    ReaderRegistry() : ioPacketRegistry(true) {}

    void registerAllTypes() override {
        add(packets::document, &DocumentReader::readRoot);
        add(packets::mesh, &DocumentReader::readMesh);
        add(packets::group, &DocumentReader::readGroup);
        add(packets::material, &DocumentReader::readMaterial);
        add(packets::positions, &DocumentReader::readPositions);
        add(packets::weights, &DocumentReader::readWeights);
        add(packets::textureCoordinates, &DocumentReader::readTextureCoordinates);
        add(packets::normals, &DocumentReader::readNormals);
        add(packets::faceSizes, &DocumentReader::readFaceSizes);
        add(packets::corners, &DocumentReader::readCorners);
    }

private:
    void add(char const * name, ReaderType::Method method) { supportedType(new ReaderType(name, method)); }
};

} // namespace

ReadResult readDocument(ioBufferedStreamInput & stream, std::int64_t fileSize, Document & document) {
    ReaderRegistry registry;
    std::unique_ptr<ioReadContext> const context(ioReadContextAlloc(stream, &registry));
    if (!context)
        return {"this is no packet file", 0};
    DocumentReader reader(*context, document, fileSize);
    context->readFile(reader);
    return {reader.findProblem(), context->getPacketCount()};
}

} // namespace mesh
