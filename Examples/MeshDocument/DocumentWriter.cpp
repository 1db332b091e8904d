#include "DocumentWriter.h"

#include "DocumentPackets.h"

#include "Base/DataFiles/ioBufferedStreamOutput.h"
#include "Base/DataFiles/ioLargeArray.h"
#include "Base/DataFiles/ioPacketRegistry.h"
#include "Base/DataFiles/ioPacketType.h"
#include "Base/DataFiles/ioWriteContext.h"

#include <memory>

namespace mesh {

namespace {

class WriterRegistry : public ioPacketRegistry {
public:
    WriterRegistry() : ioPacketRegistry(false) {}

    void registerAllTypes() override {
        for (char const * name :
             {packets::document, packets::mesh, packets::group, packets::material, packets::positions, packets::weights,
              packets::textureCoordinates, packets::normals, packets::faceSizes, packets::corners})
            supportedType(new ioPacketType(name));
    }
};

class DocumentWriter {
public:
    DocumentWriter(ioWriteContext & context, qvUtil::Progress & progress) : context_(context), progress_(progress) {}

    void write(Document const & document) {
        countElements(document);
        writeRoot(document);
        writeValues(packets::positions, &document, document.positions);
        writeArray(packets::weights, &document, document.weights);
        writeValues(packets::textureCoordinates, &document, document.textureCoordinates);
        writeValues(packets::normals, &document, document.normals);
        for (Mesh const * mesh = document.firstMesh; mesh; mesh = mesh->next) {
            writeMesh(*mesh);
            for (Group const * group = mesh->firstGroup; group; group = group->next)
                writeGroup(*group);
        }
        for (Material const * material = document.firstMaterial; material; material = material->next)
            writeMaterial(*material);
    }

private:
    // The text's packet ends before the one that is open, and stands in front of it in the file.
    void writeName(qvString::CString const & name) {
        context_.writeCStringPacket(name.asChar());
        context_.writeReference(name.asChar(), false);
    }

    void writeRoot(Document const & document) {
        context_.startPacket(packets::document, &document);
        writeName(document.name);
        context_.startChunk();
        context_.writeInt(document.materialLibraries.size());
        for (qvString::CString const & library : document.materialLibraries)
            context_.writeCString(library.asChar());
        context_.startChunk();
        context_.writeInt(document.positions.size() * numbersPerValue);
        context_.writeInt(document.weights.size());
        context_.writeInt(document.textureCoordinates.size() * numbersPerValue);
        context_.writeInt(document.normals.size() * numbersPerValue);
        context_.startChunk();
        context_.writeReference(document.firstMesh, false);
        context_.writeReference(document.firstMaterial, false);
        context_.endPacket();
    }

    void writeMesh(Mesh const & mesh) {
        context_.startPacket(packets::mesh, &mesh);
        context_.writeCString(mesh.name.asChar());
        context_.writeReference(mesh.document, false);
        context_.writeReference(mesh.next, false);
        context_.startChunk();
        context_.writeReference(mesh.firstGroup, false);
        context_.writeReference(mesh.lastGroup, false);
        context_.endPacket();
    }

    void writeGroup(Group const & group) {
        context_.startPacket(packets::group, &group);
        context_.writeCString(group.name.asChar());
        context_.writeReference(group.mesh, false);
        context_.writeReference(group.next, false);
        context_.startChunk();
        context_.writeInt(group.faceSizes.size());
        context_.writeInt(group.corners.size());
        context_.writeInt(group.uses.size());
        for (MaterialUse const & use : group.uses) {
            context_.startSubPacket();
            context_.writeReference(use.material, false);
            context_.writeInt(use.firstFace);
            context_.writeInt(use.faceCount);
            context_.endSubPacket();
        }
        context_.endPacket();
        writeArray(packets::faceSizes, &group, group.faceSizes);
        writeArray(packets::corners, &group, group.corners);
    }

    void writeMaterial(Material const & material) {
        context_.startPacket(packets::material, &material);
        writeName(material.name);
        context_.writeReference(material.next, false);
        context_.startChunk();
        context_.writeInt(material.users.size());
        for (Group const * user : material.users)
            context_.writeReference(user, false);
        context_.endPacket();
    }

    template <class T>
    void writeArray(char const * type, void const * owner, qv::vector<T> const & array) {
        ioWriteLargeArray(context_, type, owner, array.size(), array.data());
        report(array.size());
    }

    template <class Value>
    void writeValues(char const * type, void const * owner, qv::vector<Value> const & values) {
        ioWriteLargeArray(context_, type, owner, values.size() * numbersPerValue, numbersOf(values));
        report(values.size() * numbersPerValue);
    }

    void countElements(Document const & document) {
        total_ = document.weights.size();
        total_ += double(numbersPerValue) *
                  (double(document.positions.size()) + document.textureCoordinates.size() + document.normals.size());
        for (Group const & group : document.groups)
            total_ += double(group.faceSizes.size()) + group.corners.size();
    }

    void report(int elements) {
        done_ += elements;
        if (total_ > 0)
            progress_.set(done_ / total_);
    }

    ioWriteContext & context_;
    qvUtil::Progress & progress_;
    double done_ = 0; // elements of arrays
    double total_ = 0;
};

} // namespace

bool writeDocument(ioBufferedStreamOutput & stream, ioWriteMethod method, Document const & document,
                   qvUtil::Progress & progress) {
    WriterRegistry registry;
    std::unique_ptr<ioWriteContext> const context(ioWriteContextAlloc(stream, method, &registry));
    if (!context)
        return false;
    context->startFile();
    DocumentWriter(*context, progress).write(document);
    context->endFile();
    return context->good();
}

} // namespace mesh
