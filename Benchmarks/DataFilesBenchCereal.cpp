#include "DataFilesBenchDocument.h"

#include <cereal/archives/binary.hpp>
#include <cereal/types/memory.hpp>
#include <cereal/types/string.hpp>
#include <cereal/types/vector.hpp>

#include <fstream>

namespace bench {

template <class Archive>
void serialize(Archive & archive, SharedDocument::ItemType & item) {
    item.fields(archive);
}

namespace {

void write(SharedDocument & document, char const * path) {
    std::ofstream file(path, std::ios::binary);
    cereal::BinaryOutputArchive archive(file);
    archive(document.doubles, document.items);
}

void read(SharedDocument & document, char const * path) {
    std::ifstream file(path, std::ios::binary);
    cereal::BinaryInputArchive archive(file);
    archive(document.doubles, document.items);
}

} // namespace

void addCerealRows() { addDocumentRows("packets binary", "cereal", Digits::all, write, read); }

} // namespace bench
