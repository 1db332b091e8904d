#include "DataFilesBenchDocument.h"

#include <boost/archive/binary_iarchive.hpp>
#include <boost/archive/binary_oarchive.hpp>
#include <boost/archive/text_iarchive.hpp>
#include <boost/archive/text_oarchive.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>

#include <fstream>
#include <streambuf>

namespace boost::serialization {

template <class Archive>
void serialize(Archive & archive, bench::PlainDocument::ItemType & item, unsigned) {
    item.fields(archive);
}

template <class Archive>
void serialize(Archive & archive, bench::Node & node, unsigned) {
    for (bench::Node *& used : node.uses) {
        archive & used;
    }
}

} // namespace boost::serialization

namespace bench {

namespace {

template <class Archive>
void write(PlainDocument & document, char const * path) {
    std::ofstream file(path, std::ios::binary);
    Archive archive(file);
    std::vector<double> const & doubles = document.doubles;
    std::vector<PlainDocument::ItemType *> const & items = document.items;
    archive << doubles << items;
}

template <class Archive>
void read(PlainDocument & document, char const * path) {
    std::ifstream file(path, std::ios::binary);
    Archive archive(file);
    archive >> document.doubles >> document.items;
}

// Takes everything and keeps nothing.
class Swallow : public std::streambuf {
protected:
    int_type overflow(int_type c) override { return traits_type::not_eof(c); }
    std::streamsize xsputn(char const *, std::streamsize count) override { return count; }
};

void referencesWrite(benchmark::State & state) {
    auto const nodes = makeNodes();
    for (auto _ : state) {
        Swallow swallow;
        boost::archive::binary_oarchive archive(swallow);
        for (auto const & node : nodes) {
            Node const * const pointer = node.get();
            archive << pointer;
        }
    }
}

} // namespace

void addBoostRows() {
    using namespace boost::archive;
    addDocumentRows("packets binary", "boost.serialization", Digits::all, write<binary_oarchive>,
                    read<binary_iarchive>);
    addDocumentRows("packets ascii", "boost.serialization", Digits::ofText, write<text_oarchive>, read<text_iarchive>);
    benchmark::RegisterBenchmark("reference map|100,000 pointers, four uses each|boost.serialization", referencesWrite)
        ->Unit(benchmark::kMillisecond);
}

} // namespace bench
