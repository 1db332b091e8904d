// The fields copied one behind the other, and nothing else: what no general format can beat.

#include "DataFilesBenchDocument.h"

#include <cstdio>
#include <cstring>
#include <unordered_map>

namespace bench {

namespace {

using PlainItem = PlainDocument::ItemType;

struct CloseFile {
    void operator()(std::FILE * file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

class Writer {
public:
    template <class T>
    void put(T const & value) {
        putBytes(&value, sizeof value);
    }
    void putBytes(void const * bytes, std::size_t size) {
        if (bytes_.size() - used_ < size) {
            bytes_.resize(bytes_.size() * 2 + size);
        }
        std::memcpy(bytes_.data() + used_, bytes, size);
        used_ += size;
    }
    int numberOf(void const * pointer) {
        if (!pointer) {
            return 0;
        }
        return numbers_.try_emplace(pointer, static_cast<int>(numbers_.size()) + 1).first->second;
    }
    void writeTo(char const * path) const {
        File const file(std::fopen(path, "wb"));
        if (!file || std::fwrite(bytes_.data(), 1, used_, file.get()) != used_) {
            fail("a file could not be written");
        }
    }

private:
    std::vector<char> bytes_ = std::vector<char>(1 << 20);
    std::size_t used_ = 0;
    std::unordered_map<void const *, int> numbers_;
};

void write(PlainDocument & document, char const * path) {
    Writer writer;
    writer.put(static_cast<int>(document.items.size()));
    writer.put(static_cast<int>(document.doubles.size()));
    writer.putBytes(document.doubles.data(), document.doubles.size() * sizeof(double));
    for (PlainItem const * item : document.items) {
        writer.put(writer.numberOf(item));
        writer.put(item->scalars.flag);
        writer.put(item->scalars.kind);
        writer.put(item->scalars.level);
        writer.put(item->scalars.count);
        writer.put(item->scalars.mask);
        writer.put(item->scalars.id);
        writer.put(item->scalars.weight);
        writer.put(item->scalars.value);
        for (PlainItem const * reference : item->references) {
            writer.put(writer.numberOf(reference));
        }
        writer.putBytes(item->name.c_str(), item->name.size() + 1);
    }
    writer.writeTo(path);
}

std::vector<char> contentsOf(char const * path) {
    File const file(std::fopen(path, "rb"));
    if (!file) {
        fail("a file could not be read");
    }
    std::fseek(file.get(), 0, SEEK_END);
    std::vector<char> bytes(static_cast<std::size_t>(std::ftell(file.get())));
    std::rewind(file.get());
    if (std::fread(bytes.data(), 1, bytes.size(), file.get()) != bytes.size()) {
        fail("a file could not be read");
    }
    return bytes;
}

// What is read is what this program has written, so nothing is tested.
class Reader {
public:
    explicit Reader(char const * path) : bytes_(contentsOf(path)), at_(bytes_.data()) {}
    template <class T>
    T get() {
        T value;
        std::memcpy(&value, at_, sizeof value);
        at_ += sizeof value;
        return value;
    }
    void getBytes(void * bytes, std::size_t size) {
        std::memcpy(bytes, at_, size);
        at_ += size;
    }
    char const * getText() {
        char const * const text = at_;
        at_ += std::strlen(text) + 1;
        return text;
    }

private:
    std::vector<char> const bytes_;
    char const * at_;
};

// References go forward in no file of this program's, so the place of a definition is known when it is used.
void read(PlainDocument & document, char const * path) {
    Reader reader(path);
    std::unordered_map<int, PlainItem *> objects{{0, nullptr}};
    document.items.resize(static_cast<std::size_t>(reader.get<int>()));
    document.doubles.resize(static_cast<std::size_t>(reader.get<int>()));
    reader.getBytes(document.doubles.data(), document.doubles.size() * sizeof(double));
    for (PlainItem *& item : document.items) {
        item = new PlainItem();
        objects[reader.get<int>()] = item;
        item->scalars.flag = reader.get<bool>();
        item->scalars.kind = reader.get<signed char>();
        item->scalars.level = reader.get<short>();
        item->scalars.count = reader.get<int>();
        item->scalars.mask = reader.get<unsigned>();
        item->scalars.id = reader.get<std::int64_t>();
        item->scalars.weight = reader.get<float>();
        item->scalars.value = reader.get<double>();
        for (PlainItem *& reference : item->references) {
            reference = objects[reader.get<int>()];
        }
        item->name = reader.getText();
    }
}

void doublesWrite(benchmark::State & state) {
    MemoryFile const file;
    std::vector<double> const & doubles = sample().doubles;
    for (auto _ : state) {
        File const out(std::fopen(file.path(), "wb"));
        if (!out || std::fwrite(doubles.data(), sizeof(double), doubles.size(), out.get()) != doubles.size()) {
            fail("the doubles could not be written");
        }
    }
}

void doublesRead(benchmark::State & state) {
    MemoryFile const file;
    std::vector<double> back = sample().doubles;
    {
        File const out(std::fopen(file.path(), "wb"));
        std::fwrite(back.data(), sizeof(double), back.size(), out.get());
    }
    for (auto _ : state) {
        File const in(std::fopen(file.path(), "rb"));
        if (!in || std::fread(back.data(), sizeof(double), back.size(), in.get()) != back.size()) {
            fail("the doubles could not be read");
        }
    }
}

void mapAlone(benchmark::State & state) {
    auto const nodes = makeNodes();
    for (auto _ : state) {
        std::unordered_map<void const *, int> map;
        long sum = 0;
        auto const numberOf = [&map](Node const * node) {
            return map.try_emplace(node, static_cast<int>(map.size()) + 1).first->second;
        };
        for (auto const & node : nodes) {
            sum += numberOf(node.get());
            for (Node const * used : node->uses) {
                sum += numberOf(used);
            }
        }
        benchmark::DoNotOptimize(sum);
    }
}

} // namespace

void addByHandRows() {
    addDocumentRows("packets binary", "by hand", Digits::all, write, read);
    benchmark::RegisterBenchmark("doubles alone write|1e6 doubles on a file in memory|fwrite", doublesWrite)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("doubles alone read|1e6 doubles on a file in memory|fread", doublesRead)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("reference map alone|100,000 pointers, four uses each|std::unordered_map", mapAlone)
        ->Unit(benchmark::kMillisecond);
}

} // namespace bench
