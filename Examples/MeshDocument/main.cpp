// MeshDocument <file.obj> [directory]
//
// Reads an OBJ file into a document, writes the document as a packet file in all four forms, reads each file back and
// compares what it holds with the document. The files are named for the OBJ file and stay in the directory.
//
// Exit codes: 0 when everything came back equal, 1 when something is wrong, 2 for wrong arguments.

#include "DocumentReader.h"
#include "DocumentWriter.h"
#include "MeshModel.h"
#include "ObjReader.h"

#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/DataFiles/ioBufferedStreamOutput.h"
#include "Base/Strings/qvStringIString.h"

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

struct Form {
    char const * name;
    ioWriteMethod method;
    mesh::Exactness exactness;
};

constexpr Form forms[] = {
    {"ascii", ioWriteAscii, mesh::Exactness::decimalText},
    {"binary", ioWriteBinary, mesh::Exactness::bits},
    {"ascii-debug", ioWriteAsciiDebug, mesh::Exactness::decimalText},
    {"binary-debug", ioWriteBinaryDebug, mesh::Exactness::bits},
};

// What ends the program with its text on standard error.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

qvString::IString fileName(fs::path const & path) { return qvString::IString(path.c_str(), qvString::UTF8); }

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

void readObjFile(char const * name, mesh::Document & document) {
    ioBufferedStreamInput stream;
    stream.openFile(fileName(name));
    if (!stream.good())
        throw Failure(std::string(name) + ": cannot be opened");
    mesh::ObjReader reader(document);
    bool const isRead = reader.read(stream);
    stream.close();
    if (!isRead)
        throw Failure(std::string(name) + ":" + std::to_string(reader.line()) + ": " + reader.problem().asChar());
    std::printf("%s: %d meshes, %d groups, %d materials, %d positions; %lld statements skipped\n", name,
                document.meshes.size(), document.groups.size(), document.materials.size(), document.positions.size(),
                static_cast<long long>(reader.skippedStatements()));
}

// A file under another name until it is whole; what is left of it goes when it never is.
class PartialFile {
public:
    explicit PartialFile(fs::path const & target) : target_(target), path_(target) { path_ += ".partial"; }
    PartialFile(PartialFile const &) = delete;
    PartialFile & operator=(PartialFile const &) = delete;
    ~PartialFile() {
        std::error_code ignored;
        if (!kept_)
            fs::remove(path_, ignored);
    }

    fs::path const & path() const { return path_; }
    void keep() {
        fs::rename(path_, target_);
        kept_ = true;
    }

private:
    fs::path target_;
    fs::path path_;
    bool kept_ = false;
};

void writeFile(fs::path const & path, Form const & form, mesh::Document const & document) {
    PartialFile file(path);
    ioBufferedStreamOutput stream;
    stream.openFile(fileName(file.path()));
    bool const isWritten = stream.good() && mesh::writeDocument(stream, form.method, document);
    stream.close();
    if (!isWritten || !stream.good())
        throw Failure(path.string() + ": cannot be written");
    file.keep();
}

mesh::ReadResult readFile(fs::path const & path, mesh::Document & document) {
    ioBufferedStreamInput stream;
    stream.openFile(fileName(path));
    if (!stream.good())
        throw Failure(path.string() + ": cannot be opened");
    return mesh::readDocument(stream, ioBufferedStream::fileSize(fileName(path)), document);
}

// One row of the table; whether the document came back.
bool tryForm(Form const & form, fs::path const & path, mesh::Document const & document) {
    auto const writing = Clock::now();
    writeFile(path, form, document);
    double const writeTime = millisecondsSince(writing);

    mesh::Document copy;
    auto const reading = Clock::now();
    mesh::ReadResult const result = readFile(path, copy);
    double const readTime = millisecondsSince(reading);

    qvString::CString verdict = result.problem;
    if (verdict.isEmpty())
        verdict = mesh::compareDocuments(document, copy, form.exactness);
    bool const isEqual = verdict.isEmpty();
    if (isEqual)
        verdict = form.exactness == mesh::Exactness::bits ? "equal" : "equal to the digits written";
    std::printf("%-13s %10llu %9d %10.2f %10.2f  %s\n", form.name, static_cast<unsigned long long>(fs::file_size(path)),
                result.packets, writeTime, readTime, verdict.asChar());
    return isEqual;
}

int run(char const * objName, fs::path const & directory) {
    mesh::Document document;
    document.name = fs::path(objName).stem().c_str();
    readObjFile(objName, document);
    std::printf("%-13s %10s %9s %10s %10s  %s\n", "form", "bytes", "packets", "write/ms", "read/ms", "verdict");
    bool allEqual = true;
    for (Form const & form : forms) {
        fs::path const name = fs::path(objName).stem().string() + "-" + form.name + ".packets";
        allEqual = tryForm(form, directory / name, document) && allEqual;
    }
    return allEqual ? 0 : 1;
}

} // namespace

int main(int argc, char ** argv) {
    if (argc != 2 && argc != 3) {
        std::fprintf(stderr, "usage: MeshDocument <file.obj> [directory]\n");
        return 2;
    }
    try {
        return run(argv[1], argc == 3 ? argv[2] : ".");
    } catch (std::exception const & failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
}
