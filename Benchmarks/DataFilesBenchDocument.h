// The document that everybody writes and reads: 100,000 objects of 8 scalars, 3 references and a string, and a million
// doubles. And the file in memory that it goes to.

#ifndef DataFilesBenchDocument_h
#define DataFilesBenchDocument_h

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace bench {

inline constexpr int numItems = 100000;
inline constexpr int numDoubles = 1000000;
inline constexpr int numReferences = 3;

struct Scalars {
    bool flag;
    signed char kind;
    short level;
    int count;
    unsigned mask;
    std::int64_t id;
    float weight;
    double value;
};

// Where the documents come from, and what they are compared with. References go to items further in front, so that
// archives which follow pointers do not descend from item to item.
struct SampleItem {
    Scalars scalars;
    int references[numReferences]; // -1 for null
    std::string name;
};
struct Sample {
    std::vector<SampleItem> items;
    std::vector<double> doubles;
};
Sample const & sample();

template <class T>
using PlainPointer = T *;
template <class T>
using SharedPointer = std::shared_ptr<T>;

template <template <class> class Pointer>
struct Item {
    Scalars scalars;
    Pointer<Item> references[numReferences];
    std::string name;

    template <class Archive>
    void fields(Archive & archive) {
        archive & scalars.flag & scalars.kind & scalars.level & scalars.count & scalars.mask & scalars.id & scalars
                .weight & scalars.value & references[0] &
            references[1] & references[2] & name;
    }
};

// How exactly a form keeps numbers: text has 16 digits of a double and 7 of a float.
enum class Digits { all, ofText };

inline bool sameNumber(double a, double b, double relative) { return std::fabs(a - b) <= std::fabs(b) * relative; }

template <template <class> class Pointer>
class Document {
public:
    using ItemType = Item<Pointer>;

    Document() = default;
    explicit Document(Sample const & from) : doubles(from.doubles) {
        for (SampleItem const & given : from.items) {
            Pointer<ItemType> item = newItem();
            item->scalars = given.scalars;
            item->name = given.name;
            for (int i = 0; i < numReferences; ++i) {
                int const to = given.references[i];
                item->references[i] = to < 0 ? nullptr : items[static_cast<std::size_t>(to)];
            }
            items.push_back(item);
        }
    }
    ~Document() {
        if constexpr (std::is_pointer_v<Pointer<ItemType>>) {
            for (ItemType * item : items) {
                delete item;
            }
        }
    }
    Document(Document const &) = delete;
    Document & operator=(Document const &) = delete;

    static Pointer<ItemType> newItem() {
        if constexpr (std::is_pointer_v<Pointer<ItemType>>) {
            return new ItemType();
        } else {
            return std::make_shared<ItemType>();
        }
    }

    bool equals(Sample const & wanted, Digits digits) const {
        if (items.size() != wanted.items.size() || doubles.size() != wanted.doubles.size()) {
            return false;
        }
        for (std::size_t i = 0; i < items.size(); ++i) {
            if (!items[i] || !equals(*items[i], wanted.items[i], digits)) {
                return false;
            }
        }
        for (std::size_t i = 0; i < doubles.size(); ++i) {
            if (!sameNumber(doubles[i], wanted.doubles[i], digits == Digits::all ? 0 : 1e-15)) {
                return false;
            }
        }
        return true;
    }

    std::vector<Pointer<ItemType>> items;
    std::vector<double> doubles;

private:
    bool equals(ItemType const & item, SampleItem const & wanted, Digits digits) const {
        for (int i = 0; i < numReferences; ++i) {
            int const to = wanted.references[i];
            if (item.references[i] != (to < 0 ? Pointer<ItemType>() : items[static_cast<std::size_t>(to)])) {
                return false;
            }
        }
        Scalars const & a = item.scalars;
        Scalars const & b = wanted.scalars;
        return a.flag == b.flag && a.kind == b.kind && a.level == b.level && a.count == b.count && a.mask == b.mask &&
               a.id == b.id && sameNumber(a.weight, b.weight, digits == Digits::all ? 0 : 1e-6) &&
               sameNumber(a.value, b.value, digits == Digits::all ? 0 : 1e-15) && item.name == wanted.name;
    }
};

using PlainDocument = Document<PlainPointer>;
using SharedDocument = Document<SharedPointer>;

// A file that lives in memory for as long as the object does.
class MemoryFile {
public:
    MemoryFile();
    ~MemoryFile();
    MemoryFile(MemoryFile const &) = delete;
    MemoryFile & operator=(MemoryFile const &) = delete;

    // Opening it truncates and rewrites the same file.
    char const * path() const { return path_.c_str(); }

private:
    int descriptor_;
    std::string path_;
};

[[noreturn]] void fail(std::string const & what);

// A row for writing a document and one for reading it back, behind a check that what comes back is the sample.
template <class DocumentType>
void addDocumentRows(std::string const & form, std::string const & who, Digits digits,
                     void (*write)(DocumentType &, char const *), void (*read)(DocumentType &, char const *)) {
    static constexpr char const * what = "|100,000 objects + 1e6 doubles|";
    {
        MemoryFile const file;
        DocumentType document(sample());
        write(document, file.path());
        DocumentType back;
        read(back, file.path());
        if (!back.equals(sample(), digits)) {
            fail(form + ", " + who + ": what was read is not what was written");
        }
    }
    benchmark::RegisterBenchmark((form + " write" + what + who).c_str(), [write](benchmark::State & state) {
        MemoryFile const file;
        DocumentType document(sample());
        for (auto _ : state) {
            write(document, file.path());
        }
    })->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark((form + " read" + what + who).c_str(), [write, read](benchmark::State & state) {
        MemoryFile const file;
        {
            DocumentType document(sample());
            write(document, file.path());
        }
        for (auto _ : state) {
            auto back = std::make_unique<DocumentType>();
            read(*back, file.path());
            state.PauseTiming();
            back.reset();
            state.ResumeTiming();
        }
    })->Unit(benchmark::kMillisecond);
}

// An object that is nothing but references, for the maps between pointers and numbers.
inline constexpr int numNodes = 100000;
inline constexpr int usesPerNode = 4;
struct Node {
    Node * uses[usesPerNode];
};
// Each of the nodes has the four that stand in front of it, so that (but for the ends) each is used four times.
std::vector<std::unique_ptr<Node>> makeNodes();

// Each party's own rows.
void addQvRows();
void addByHandRows();
void addBoostRows();
void addCerealRows();

} // namespace bench

#endif
