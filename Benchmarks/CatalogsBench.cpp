// String tables and their catalogs, beside a map of the standard library; and the packing of rectangles, which stands
// alone.

#include <benchmark/benchmark.h>

#include "Base/Strings/qvStringTableManager.h"
#include "Base/Strings/qvStringTableStringTable.h"
#include "Base/Utility/qvUtilPack.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

[[noreturn]] void fail(std::string const & what) {
    std::fprintf(stderr, "both sides should give the same: %s\n", what.c_str());
    std::abort();
}

constexpr int numEntries = 100000;

// Texts as programs have them: half of the lines have some 60 bytes, the others more, one in eight goes over two lines.
std::string textOf(int i) {
    std::string text = "Choose where to put item " + std::to_string(i);
    for (int n = i % 4; n > 0; --n)
        text += ", and what it is called there";
    return text;
}

std::vector<std::string> makeKeys() {
    std::vector<std::string> keys;
    for (int i = 0; i < numEntries; ++i) {
        char key[64];
        std::snprintf(key, sizeof key, "dialogs_%03d.message_%05d", i / 500, i);
        keys.emplace_back(key);
    }
    return keys;
}

class Files {
public:
    Files() {
        std::vector<std::string> keys = makeKeys();
        sorted_ = write("sorted", keys);
        std::shuffle(keys.begin(), keys.end(), std::mt19937(7));
        shuffled_ = write("shuffled", keys);
    }
    Files(Files const &) = delete;
    Files & operator=(Files const &) = delete;
    ~Files() {
        std::filesystem::remove(sorted_);
        std::filesystem::remove(shuffled_);
    }
    std::string const & sorted() const { return sorted_; }
    std::string const & shuffled() const { return shuffled_; }

private:
    static std::string write(std::string const & kind, std::vector<std::string> const & keys) {
        auto const path = std::filesystem::temp_directory_path() / (kind + std::to_string(getpid()) + ".catalog");
        std::ofstream file(path, std::ios::binary);
        for (std::size_t i = 0; i < keys.size(); ++i)
            file << keys[i] << (i % 8 == 0 ? " = \"\\\n" : " = \"") << textOf(static_cast<int>(i)) << "\"\n";
        return path;
    }
    std::string sorted_;
    std::string shuffled_;
};

using Map = std::map<std::string, std::string>;

// What a program would write for a format of one line for an entry, without any checks.
Map readByHand(std::string const & path) {
    Map map;
    std::ifstream file(path);
    std::string line;
    std::string rest;
    while (std::getline(file, line)) {
        if (line.back() == '\\') {
            rest = line.substr(0, line.size() - 1);
            continue;
        }
        line = rest + line;
        rest.clear();
        std::size_t const equals = line.find(" = \"");
        map[line.substr(0, equals)] = line.substr(equals + 4, line.size() - equals - 5);
    }
    return map;
}

void readCatalog(std::string const & path) {
    qvStringTable::appStringTable().clear();
    if (qvStringTable::Manager::loadCatalog(qvString::IString(path.c_str())))
        fail("the catalog is sound");
}

void addLoading(std::string const & kind, std::string const & path) {
    readCatalog(path);
    for (auto const & [key, text] : readByHand(path))
        if (qvStringTable::appStringTable().getString(key.c_str()).asUTF8() != text)
            fail("entries");
    auto const bytes = static_cast<std::int64_t>(std::filesystem::file_size(path));
    std::string const row = "catalog loading|" + kind + "|";
    benchmark::RegisterBenchmark((row + "qv").c_str(), [path, bytes](benchmark::State & state) {
        for (auto _ : state)
            readCatalog(path);
        state.SetBytesProcessed(state.iterations() * bytes);
    });
    benchmark::RegisterBenchmark((row + "getline, std::map").c_str(), [path, bytes](benchmark::State & state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(readByHand(path));
        state.SetBytesProcessed(state.iterations() * bytes);
    });
}

void addLookUp(std::string const & path) {
    readCatalog(path);
    auto const map = std::make_shared<Map const>(readByHand(path));
    auto const table = std::make_shared<qvStringTable::StringTable>();
    std::vector<std::string> texts = makeKeys();
    std::shuffle(texts.begin(), texts.end(), std::mt19937(11));
    std::vector<qvStringTable::Key> keys;
    for (std::string const & text : texts) {
        keys.emplace_back(text.c_str());
        table->assign(keys.back(), qvStringTable::appStringTable().getString(keys.back()));
    }
    std::string const row = "string table look-up|100,000 keys|";
    benchmark::RegisterBenchmark((row + "qv").c_str(), [table, keys](benchmark::State & state) {
        for (auto _ : state)
            for (qvStringTable::Key const & key : keys)
                benchmark::DoNotOptimize(&table->getString(key));
        state.SetItemsProcessed(state.iterations() * numEntries);
    });
    benchmark::RegisterBenchmark((row + "std::map").c_str(), [map, texts](benchmark::State & state) {
        for (auto _ : state)
            for (std::string const & text : texts)
                benchmark::DoNotOptimize(&map->find(text)->second);
        state.SetItemsProcessed(state.iterations() * numEntries);
    });
}

// Sides from 4 to 64, small ones more often.
qv::vector<qvUtil::IntRange2d> rectangles(int n) {
    std::mt19937 random(3);
    qv::vector<qvUtil::IntRange2d> items;
    auto const side = [&] { return 4 + static_cast<int>(random() % 61 * (random() % 61) / 61); };
    for (int i = 0; i < n; ++i) {
        qvUtil::IntRange2d item;
        item.set(0, 0, side(), side());
        items.append(item);
    }
    return items;
}

void addPack(bool powerOfTwo) {
    for (int n : {1000, 3000, 10000}) {
        std::string const name =
            std::string("pack|") + (powerOfTwo ? "powers of two, " : "square, ") + std::to_string(n) + "|qv";
        benchmark::RegisterBenchmark(name.c_str(), [n, powerOfTwo](benchmark::State & state) {
            auto const items = rectangles(n);
            double area = 0;
            for (auto const & item : items)
                area += static_cast<double>(item.area());
            qvUtil::IntRange2d bin;
            for (auto _ : state) {
                auto placed = items;
                bin = qvUtil::pack(placed, powerOfTwo);
            }
            state.counters["filled"] = area / static_cast<double>(bin.area());
            state.SetItemsProcessed(state.iterations() * n);
        })->Unit(benchmark::kMillisecond);
    }
}

} // namespace

int main(int argc, char ** argv) {
    Files const files;
    addLoading("100,000 entries in order", files.sorted());
    addLoading("100,000 entries shuffled", files.shuffled());
    addLookUp(files.shuffled());
    addPack(false);
    addPack(true);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
