// Packet files beside serialization libraries and beside plain memory copies.
//
// "packets": a document of 100,000 objects and a million doubles, written to a file in memory and read back. The
// others write the objects through pointers with tracking and the doubles as one vector. "by hand" is what is left
// when nothing but the fields is copied: no types, no frames, no way to skip anything.
// "reference map": 100,000 objects that hold nothing but four pointers each, written by the whole writer on a stream
// that swallows all.
// "doubles alone": parcels beside one fwrite or fread.

#include "DataFilesBenchDocument.h"

#include <cstdio>
#include <cstdlib>
#include <random>
#include <sys/mman.h>
#include <unistd.h>

namespace bench {

void fail(std::string const & what) {
    std::fprintf(stderr, "%s\n", what.c_str());
    std::abort();
}

Sample const & sample() {
    static Sample const made = [] {
        Sample fresh;
        std::mt19937_64 random(20240229);
        std::normal_distribution<double> normal(0, 1000);
        for (int i = 0; i < numItems; ++i) {
            SampleItem item;
            std::uint64_t const bits = random();
            item.scalars = {bits % 2 == 1,
                            static_cast<signed char>(bits >> 8),
                            static_cast<short>(bits >> 16),
                            static_cast<int>(bits >> 40),
                            static_cast<unsigned>(bits >> 32),
                            static_cast<std::int64_t>(random()),
                            static_cast<float>(normal(random)),
                            normal(random)};
            for (int & to : item.references) {
                to = i == 0 || random() % 16 == 0 ? -1 : static_cast<int>(random() % static_cast<unsigned>(i));
            }
            item.name.assign(random() % 24, 'a');
            for (char & c : item.name) {
                c = static_cast<char>('a' + random() % 26);
            }
            fresh.items.push_back(item);
        }
        for (int i = 0; i < numDoubles; ++i) {
            fresh.doubles.push_back(normal(random));
        }
        return fresh;
    }();
    return made;
}

std::vector<std::unique_ptr<Node>> makeNodes() {
    std::vector<std::unique_ptr<Node>> nodes;
    for (int i = 0; i < numNodes; ++i) {
        auto node = std::make_unique<Node>();
        for (int use = 0; use < usesPerNode; ++use) {
            int const to = i - 1 - use;
            node->uses[use] = to < 0 ? node.get() : nodes[static_cast<std::size_t>(to)].get();
        }
        nodes.push_back(std::move(node));
    }
    return nodes;
}

MemoryFile::MemoryFile()
    : descriptor_(memfd_create("bench", MFD_CLOEXEC)), path_("/proc/self/fd/" + std::to_string(descriptor_)) {
    if (descriptor_ < 0) {
        fail("there is no file in memory");
    }
}

MemoryFile::~MemoryFile() { close(descriptor_); }

} // namespace bench

int main(int argc, char ** argv) {
    bench::addQvRows();
    bench::addByHandRows();
#ifdef QV_BENCH_BOOST
    bench::addBoostRows();
#else
    std::printf("boost.serialization was not found: its rows are left out\n");
#endif
#ifdef QV_BENCH_CEREAL
    bench::addCerealRows();
#else
    std::printf("cereal was not found: its rows are left out\n");
#endif
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
