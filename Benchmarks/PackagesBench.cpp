// Packages and files beside the programs that one would use instead, on a file system in memory, where nobody waits for
// storage. "Stated" rows tell how a cost grows.

#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/DataFiles/ioPackageFile.h"
#include "Base/OS/qvOSFile.h"

#include <benchmark/benchmark.h>
#ifdef QV_BENCH_SQLITE
#include <sqlite3.h>
#endif
#ifdef QV_BENCH_LIBZIP
#include <zip.h>
#endif

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qvString::IString;

void require(bool condition, std::string const & what) {
    if (!condition) {
        std::fprintf(stderr, "PackagesBench: %s\n", what.c_str());
        std::abort();
    }
}

IString wide(std::string const & text) { return IString(text.c_str(), qvString::UTF8); }

// A folder that goes with the program.
class Scratch {
public:
    explicit Scratch(fs::path const & place) : root_(place) {
        root_ /= "qvbase-bench-" + std::to_string(std::rand());
        fs::create_directories(root_);
    }
    Scratch(Scratch const &) = delete;
    Scratch & operator=(Scratch const &) = delete;
    ~Scratch() { fs::remove_all(root_); }
    std::string path(std::string const & name) const { return (root_ / name).string(); }

private:
    fs::path root_;
};

// In memory, where there is such a place.
Scratch const & scratch() {
    static Scratch const made(fs::is_directory("/dev/shm") ? "/dev/shm" : fs::temp_directory_path());
    return made;
}

// As a rule on a disk.
Scratch const & diskScratch() {
    static Scratch const made(fs::temp_directory_path());
    return made;
}

void run(std::string const & line) {
    require(std::system(("cd " + scratch().path("") + " && " + line + " > /dev/null").c_str()) == 0, line);
}

// The first real headers that the machine has, in their directories.
constexpr int numFiles = 2000;
std::string const & tree() {
    static std::string const made = [] {
        std::vector<fs::path> files;
        for (auto const & entry : fs::recursive_directory_iterator("/usr/include"))
            if (entry.is_regular_file() && !entry.is_symlink())
                files.push_back(entry.path());
        std::sort(files.begin(), files.end());
        files.resize(std::min<std::size_t>(files.size(), numFiles));
        fs::path const root = scratch().path("tree");
        for (fs::path const & file : files) {
            fs::path const to = root / file.relative_path();
            fs::create_directories(to.parent_path());
            fs::copy_file(file, to);
        }
        return std::string("tree");
    }();
    return made;
}

std::string const & largeFile() {
    static std::string const made = [] {
        std::ofstream file(scratch().path("large"), std::ios::binary);
        std::string block(1 << 20, '\0');
        for (int i = 0; i < 64; ++i) {
            for (std::size_t at = 0; at < block.size(); at += 4)
                block[at] = static_cast<char>(std::rand());
            file << block;
        }
        return std::string("large");
    }();
    return made;
}

// Measures a command line, with what it leaves removed in between.
void program(benchmark::State & state, std::string const & line, std::string const & result) {
    for (auto _ : state) {
        state.PauseTiming();
        fs::remove_all(scratch().path(result));
        if (line.find(" -C ") != line.npos)
            fs::create_directories(scratch().path(result));
        state.ResumeTiming();
        run(line);
    }
}

void addProgram(std::string const & name, std::string const & line, std::string const & result,
                void (*prepare)() = nullptr) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [=](benchmark::State & state) {
                                     if (prepare)
                                         prepare();
                                     program(state, line, result);
                                 })
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
}

std::string const package = "'" QVPACKAGE_PROGRAM "' ";

void prepareTree() { static_cast<void>(tree()); }

void prepareArchives() {
    static bool const done = [] {
        run(package + "add tree.package " + tree());
        run("tar -cf tree.tar " + tree());
        run(package + "add --compress packed.package " + tree());
        // All give back what they got.
        run(package + "extract --to first tree.package");
        run(package + "extract --to second packed.package");
        run("mkdir third && tar -xf tree.tar -C third");
        for (std::string const back : {"first/", "second/", "third/"})
            run("diff -r " + tree() + " " + back + tree());
        return true;
    }();
    static_cast<void>(done);
}

void prepareLarge() { static_cast<void>(largeFile()); }

void prepareLargeArchives() {
    static bool const done = [] {
        run(package + "add large.package " + largeFile());
        run("tar -cf large.tar " + largeFile());
        run(package + "extract --to fourth large.package");
        run("cmp " + largeFile() + " fourth/" + largeFile());
        return true;
    }();
    static_cast<void>(done);
}

void prepareGigabyte() {
    static bool const done = [] {
        prepareLarge();
        for (int i = 0; i < 16; ++i)
            run("(cat large >> gigabyte)");
        return true;
    }();
    static_cast<void>(done);
}

// ---- Packages of many small entries

std::string entryName(int i) { return "folder" + std::to_string(i % 100) + "/entry" + std::to_string(i); }

std::string const & packageOf(int count) {
    static std::map<int, std::string> made;
    std::string & name = made[count];
    if (name.empty()) {
        name = scratch().path("entries" + std::to_string(count));
        std::ofstream(scratch().path("small")) << "forty bytes of contents or thereabouts\n";
        ioPackageFile file;
        bool isMade = !file.open(wide(name));
        for (int i = 0; i < count; ++i)
            isMade = isMade && !file.addEntry(wide(scratch().path("small")), wide(entryName(i)), false);
        require(isMade && !file.update(), "the package cannot be made");
    }
    return name;
}

void openAndList(benchmark::State & state, int count) {
    IString const name = wide(packageOf(count));
    for (auto _ : state) {
        ioPackageFile file;
        require(!file.open(name) && file.size() == count, "the package cannot be opened");
        std::int64_t bytes = 0;
        for (auto const & [entry, index] : file.getDirectory())
            bytes += file.getEntry(index)->getSize() + entry.length();
        benchmark::DoNotOptimize(bytes);
    }
    state.SetItemsProcessed(state.iterations() * count);
}

void replaceOne(benchmark::State & state, int count) {
    ioPackageFile file;
    require(!file.open(wide(packageOf(count))), "the package cannot be opened");
    IString const entry = wide(entryName(count / 2));
    IString const source = wide(scratch().path("small"));
    for (auto _ : state)
        require(!file.addEntry(source, entry, false) && !file.update(), "the entry cannot be replaced");
}

#ifdef QV_BENCH_SQLITE
void sqliteList(benchmark::State & state, int count) {
    std::string const name = scratch().path("sqlite" + std::to_string(count));
    fs::remove(name);
    sqlite3 * base = nullptr;
    auto const execute = [&](std::string const & text) {
        require(sqlite3_exec(base, text.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK, text);
    };
    sqlite3_open(name.c_str(), &base);
    execute("create table entries(name text primary key, size integer); begin");
    for (int i = 0; i < count; ++i)
        execute("insert into entries values('" + entryName(i) + "', 40)");
    execute("commit");
    sqlite3_close(base);
    for (auto _ : state) {
        sqlite3_open(name.c_str(), &base);
        sqlite3_stmt * query = nullptr;
        sqlite3_prepare_v2(base, "select name, size from entries order by name", -1, &query, nullptr);
        std::int64_t bytes = 0;
        int rows = 0;
        for (; sqlite3_step(query) == SQLITE_ROW; ++rows) {
            benchmark::DoNotOptimize(sqlite3_column_text(query, 0));
            bytes += sqlite3_column_int64(query, 1) + sqlite3_column_bytes(query, 0);
        }
        benchmark::DoNotOptimize(bytes);
        require(rows == count, "sqlite lists other entries");
        sqlite3_finalize(query);
        sqlite3_close(base);
    }
    state.SetItemsProcessed(state.iterations() * count);
}
#endif

void openAndReadOne(benchmark::State & state) {
    IString const name = wide(packageOf(numFiles));
    IString const entry = wide(entryName(numFiles / 2));
    for (auto _ : state) {
        ioPackageFile file;
        require(!file.open(name), "the package cannot be opened");
        ioBufferedStreamInput stream;
        stream.openPackageFileEntry(file.getEntry(entry));
        char block[256];
        require(stream.readData(block, sizeof block) == 39, "the entry cannot be read");
        stream.close();
    }
}

#ifdef QV_BENCH_LIBZIP
void libzipReadOne(benchmark::State & state) {
    std::string const name = scratch().path("entries.zip");
    packageOf(numFiles);
    run(package + "extract --to zipped entries" + std::to_string(numFiles));
    fs::remove(name);
    run("cd zipped && zip -q -r -0 ../entries.zip .");
    std::string const entry = entryName(numFiles / 2);
    for (auto _ : state) {
        zip_t * const archive = zip_open(name.c_str(), ZIP_RDONLY, nullptr);
        require(archive != nullptr, "libzip cannot open its archive");
        zip_file_t * const file = zip_fopen(archive, entry.c_str(), 0);
        char block[256];
        require(file != nullptr && zip_fread(file, block, sizeof block) == 39, "libzip cannot read its entry");
        zip_fclose(file);
        zip_discard(archive);
    }
}
#endif

void copyGigabyte(benchmark::State & state) {
    prepareGigabyte();
    for (auto _ : state) {
        state.PauseTiming();
        fs::remove(scratch().path("copied"));
        state.ResumeTiming();
        qvOS::File target(wide(scratch().path("copied")));
        require(!qvOS::File(wide(scratch().path("gigabyte"))).copyTo(target), "the file cannot be copied");
    }
    require(fs::file_size(scratch().path("copied")) == fs::file_size(scratch().path("gigabyte")), "the copy is short");
}

void registerAll() {
    addProgram("package add|2,000 files plain|qv", package + "add --quiet a.package tree", "a.package", prepareTree);
    addProgram("package add|2,000 files plain|tar", "tar -cf a.tar tree", "a.tar", prepareTree);
    addProgram("package add|2,000 files compressed|qv", package + "add --quiet --compress c.package tree", "c.package",
               prepareTree);
    if (std::system("which zip > /dev/null") == 0)
        addProgram("package add|2,000 files compressed|zip", "zip -q -6 -r c.zip tree", "c.zip", prepareTree);
    else
        std::fputs("zip is not installed: left out\n", stderr);
    // What it costs that the bytes are on stable storage in the end.
    std::string const disk = diskScratch().path("");
    addProgram("package add to a disk|2,000 files plain|qv", package + "add --quiet " + disk + "a.package tree",
               disk + "a.package", prepareTree);
    addProgram("package add to a disk|2,000 files plain|tar, not synced", "tar -cf " + disk + "a.tar tree",
               disk + "a.tar", prepareTree);
    addProgram("package add to a disk|2,000 files plain|tar, then sync",
               "tar -cf " + disk + "b.tar tree && sync " + disk + "b.tar", disk + "b.tar", prepareTree);
    addProgram("package extract|2,000 files|qv", package + "extract --to x tree.package", "x", prepareArchives);
    addProgram("package extract|2,000 files|tar", "tar -xf tree.tar -C y", "y", prepareArchives);
    addProgram("package one file|64 MiB add|qv", package + "add --quiet l.package large", "l.package", prepareLarge);
    addProgram("package one file|64 MiB add|tar", "tar -cf l.tar large", "l.tar", prepareLarge);
    addProgram("package one file|64 MiB extract|qv", package + "extract --to lx large.package", "lx",
               prepareLargeArchives);
    addProgram("package one file|64 MiB extract|tar", "tar -xf large.tar -C ly", "ly", prepareLargeArchives);
    auto const add = [](std::string const & name, auto function) {
        benchmark::RegisterBenchmark(name.c_str(), function)->UseRealTime()->Unit(benchmark::kMicrosecond);
    };
    for (int const count : {2000, 100000}) {
        std::string const what = "package open and list|" + std::to_string(count) + " entries|";
        add(what + "qv", [count](benchmark::State & state) { openAndList(state, count); });
#ifdef QV_BENCH_SQLITE
        add(what + "sqlite", [count](benchmark::State & state) { sqliteList(state, count); });
#endif
    }
    add("package open and read one|2,000 entries|qv", openAndReadOne);
#ifdef QV_BENCH_LIBZIP
    add("package open and read one|2,000 entries|libzip", libzipReadOne);
#else
    std::fputs("libzip is not installed: left out\n", stderr);
#endif
    for (int const count : {1000, 10000, 100000})
        add("package replace one|" + std::to_string(count) + " entries|qv",
            [count](benchmark::State & state) { replaceOne(state, count); });
    add("file copy|1 GiB|qv", copyGigabyte);
    addProgram("file copy|1 GiB|cp", "cp gigabyte copiedByCp", "copiedByCp", prepareGigabyte);
}

} // namespace

int main(int argc, char ** argv) {
    registerAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
