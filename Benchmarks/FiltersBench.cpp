// The filters of a stream beside what does the same: the program compress of package ncompress, from file to file in
// memory; memcpy, since a sum costs what reading the data costs; RC6 in ECB mode of libtomcrypt.

#include "Base/DataFiles/ioBlockCipher.h"
#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/DataFiles/ioBufferedStreamOutput.h"
#include "Base/OS/qvOSIOStream.h"
#include "Base/Strings/qvStringIString.h"

#include <benchmark/benchmark.h>
#ifdef QV_BENCH_TOMCRYPT
#include <tomcrypt.h>
#endif

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <random>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr std::size_t mebi = std::size_t{1} << 20;
constexpr std::size_t compressedSize = 16 * mebi;
constexpr std::size_t checksummedSize = 64 * mebi;
constexpr std::size_t encipheredSize = 16 * mebi;

void require(bool condition, std::string const & what) {
    if (!condition) {
        std::fprintf(stderr, "FiltersBench: %s\n", what.c_str());
        std::abort();
    }
}

qvString::IString wide(std::string const & text) { return qvString::IString(text.c_str(), qvString::UTF8); }

std::string bytesOf(std::string const & path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string randomBytes(std::size_t size) {
    std::mt19937_64 random(2026);
    std::string bytes(size, 0);
    for (std::size_t at = 0; at + 8 <= size; at += 8) {
        std::uint64_t const word = random();
        std::memcpy(&bytes[at], &word, sizeof word);
    }
    return bytes;
}

// --- compression, from file to file

// A folder in memory, where there is one.
class Folder {
public:
    Folder() {
        bool const shared = std::filesystem::is_directory("/dev/shm");
        std::string const parent = shared ? "/dev/shm" : std::filesystem::temp_directory_path().string();
        path_ = parent + "/qvbase-bench-XXXXXX";
        require(mkdtemp(path_.data()) != nullptr, "there is no folder");
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    Folder(Folder const &) = delete;
    Folder & operator=(Folder const &) = delete;

    std::string path(std::string const & name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

std::string cHeaders() {
    std::vector<std::string> names;
    auto const options = std::filesystem::directory_options::skip_permission_denied;
    for (auto const & entry : std::filesystem::recursive_directory_iterator("/usr/include", options)) {
        if (entry.is_regular_file() && entry.path().extension() == ".h") {
            names.push_back(entry.path().string());
        }
    }
    std::sort(names.begin(), names.end());
    std::string text;
    for (std::string const & name : names) {
        text += bytesOf(name);
        if (text.size() >= compressedSize) {
            break;
        }
    }
    text.resize(std::min(text.size(), compressedSize));
    return text;
}

void copyAll(ioBufferedStreamInput & in, ioBufferedStreamOutput & out) {
    std::vector<char> piece(1 << 16);
    while (in.good()) {
        out.writeData(piece.data(), in.readData(piece.data(), static_cast<int>(piece.size())));
    }
    out.close();
    require(out.good(), "the stream writes");
}

void compressQv(std::string const & from, std::string const & to) {
    ioBufferedStreamInput in;
    in.openFile(wide(from));
    ioBufferedStreamOutput out;
    out.openFile(wide(to));
    out.compress(true);
    copyAll(in, out);
}

void decompressQv(std::string const & from, std::string const & to) {
    ioBufferedStreamInput in;
    in.openFile(wide(from));
    in.compress(true);
    ioBufferedStreamOutput out;
    out.openFile(wide(to));
    copyAll(in, out);
    require(in.getStatus() == ioStreamCompressEnd, "the stream has its end");
}

// False where the program is not there.
bool runCompress(char const * options, std::string const & from, std::string const & to) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, to.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    std::string program = "compress";
    std::string option = options;
    std::string file = from;
    char * const arguments[] = {program.data(), option.data(), file.data(), nullptr};
    pid_t child = 0;
    int const failure = posix_spawnp(&child, "compress", &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = -1;
    return failure == 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) &&
           (WEXITSTATUS(status) == 0 || WEXITSTATUS(status) == 2); // 2: the data has grown
}

void add(std::string const & name, std::function<void(benchmark::State &)> run) {
    benchmark::RegisterBenchmark(name.c_str(), std::move(run))->UseRealTime()->Unit(benchmark::kMillisecond);
}

void addFileRow(std::string const & name, std::function<void()> run) {
    add(name, [run](benchmark::State & state) {
        for (auto _ : state) {
            run();
        }
    });
}

void registerCompression(Folder const & folder) {
    bool hasProgram = true;
    for (auto const & [name, data] : {std::pair<std::string, std::string>("C headers", cHeaders()),
                                      {"random bytes", randomBytes(compressedSize)}}) {
        if (data.size() < compressedSize) {
            std::printf("there are not 16 MiB of %s: the rows are left out.\n", name.c_str());
            continue;
        }
        std::string const plain = folder.path(name);
        std::ofstream(plain, std::ios::binary).write(data.data(), static_cast<std::streamsize>(data.size()));
        std::string const ours = plain + ".qv";
        std::string const theirs = plain + ".Z";
        std::string const back = plain + ".back";
        compressQv(plain, ours);
        decompressQv(ours, back);
        require(bytesOf(back) == data, "ours gives the data back");
        addFileRow("compress 16 MiB|" + name + "|qv", [=] { compressQv(plain, ours); });
        addFileRow("decompress 16 MiB|" + name + "|qv", [=] { decompressQv(ours, back); });
        hasProgram = hasProgram && runCompress("-cf", plain, theirs) && runCompress("-dc", theirs, back);
        if (hasProgram) {
            require(bytesOf(back) == data, "ncompress gives the data back");
            addFileRow("compress 16 MiB|" + name + "|ncompress",
                       [=] { require(runCompress("-cf", plain, theirs), "compress runs"); });
            addFileRow("decompress 16 MiB|" + name + "|ncompress",
                       [=] { require(runCompress("-dc", theirs, back), "compress runs"); });
        }
    }
    if (!hasProgram) {
        std::puts("the program compress was not found: its rows are left out.");
    }
}

// --- sums and the cipher, from and to memory

// Swallows what is written.
class Sink : public qvOS::IOStream {
public:
    qvUtil::Error read(void *, unsigned, unsigned * count) override {
        *count = 0;
        return {};
    }
    qvUtil::Error write(void const * buffer, unsigned size, unsigned * count) override {
        benchmark::DoNotOptimize(static_cast<char const *>(buffer)[size - 1]);
        *count = size;
        return {};
    }
};

class MemoryStream : public qvOS::IOStream {
public:
    qvUtil::Error read(void * buffer, unsigned size, unsigned * count) override {
        auto const n = std::min(std::size_t{size}, bytes.size() - readAt);
        std::memcpy(buffer, bytes.data() + readAt, n);
        readAt += n;
        *count = static_cast<unsigned>(n);
        return {};
    }
    qvUtil::Error write(void const * buffer, unsigned size, unsigned * count) override {
        bytes.append(static_cast<char const *>(buffer), size);
        *count = size;
        return {};
    }

    std::string bytes;
    std::size_t readAt = 0;
};

using Filter = void (ioBufferedStream::*)(bool);

void writeThrough(qvOS::IOStream & to, Filter filter, std::string const & data) {
    ioBufferedStreamOutput out;
    out.openIOStream(&to);
    (out.*filter)(true);
    out.writeData(data.data(), static_cast<int>(data.size()));
    out.close();
    require(out.good(), "the filter writes");
}

void readThrough(MemoryStream & from, Filter filter, std::string & data) {
    from.readAt = 0;
    ioBufferedStreamInput in;
    in.openIOStream(&from);
    (in.*filter)(true);
    int const got = in.readData(data.data(), static_cast<int>(data.size()));
    require(got == static_cast<int>(data.size()), "the filter reads");
}

void registerFilter(std::string const & row, Filter filter, std::string const & data) {
    auto const stream = std::make_shared<MemoryStream>();
    writeThrough(*stream, filter, data);
    auto const back = std::make_shared<std::string>(data.size(), '\0');
    readThrough(*stream, filter, *back);
    require(*back == data, row + " gives the data back");
    addFileRow(row + "|write|qv", [filter, &data] {
        Sink sink;
        writeThrough(sink, filter, data);
    });
    addFileRow(row + "|read|qv", [filter, stream, back] { readThrough(*stream, filter, *back); });
}

void registerChecksum() {
    static std::string const data = randomBytes(checksummedSize);
    std::string const row = "checksum filter, 64 MiB";
    registerFilter(row, &ioBufferedStream::checksum, data);
    for (char const * const name : {"|write|memcpy", "|read|memcpy"}) {
        auto const to = std::make_shared<std::string>(data.size(), '\0');
        addFileRow(row + name, [to] {
            std::memcpy(to->data(), data.data(), data.size());
            benchmark::ClobberMemory();
        });
    }
}

#ifdef QV_BENCH_TOMCRYPT

// The cipher is the same, the expansion of the key is not: theirs gets the table of ours, for the comparison.
void checkCipher(std::string const & data) {
    unsigned const key[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    symmetric_ECB ecb;
    auto const * const bytes = reinterpret_cast<unsigned char const *>(data.data());
    require(ecb_start(find_cipher("rc6"), bytes, 32, 0, &ecb) == CRYPT_OK, "libtomcrypt has RC6");
    unsigned const * const table = fdblarccos2_(key, sizeof key);
    std::copy_n(table, 44, ecb.key.rc6.K);
    unsigned char theirs[4096];
    require(ecb_encrypt(bytes, theirs, sizeof theirs, &ecb) == CRYPT_OK, "libtomcrypt enciphers");
    for (std::size_t at = 0; at < sizeof theirs; at += 16) {
        char block[16];
        fdblhypsin2_(bytes + at, block, table);
        require(std::memcmp(block, theirs + at, 16) == 0, "libtomcrypt and ours encipher alike");
    }
}

void registerTomcrypt(std::string const & row, std::string const & data) {
    register_cipher(&rc6_desc);
    checkCipher(data);
    auto const to = std::make_shared<std::string>(data.size(), '\0');
    for (auto const & [name, run] :
         {std::pair("|write|libtomcrypt", &ecb_encrypt), {"|read|libtomcrypt", &ecb_decrypt}}) {
        addFileRow(row + name, [to, &data, run = run] {
            symmetric_ECB ecb;
            auto const * const bytes = reinterpret_cast<unsigned char const *>(data.data());
            ecb_start(find_cipher("rc6"), bytes, 32, 0, &ecb);
            run(bytes, reinterpret_cast<unsigned char *>(to->data()), data.size(), &ecb);
        });
    }
}

#endif

void registerCipher() {
    static std::string const data = randomBytes(encipheredSize);
    std::string const row = "cipher filter, 16 MiB";
    registerFilter(row, &ioBufferedStream::encrypt, data);
#ifdef QV_BENCH_TOMCRYPT
    registerTomcrypt(row, data);
#else
    std::puts("libtomcrypt was not found: its rows are left out.");
#endif
}

} // namespace

int main(int argc, char ** argv) {
    Folder const folder;
    registerCompression(folder);
    registerChecksum();
    registerCipher();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
