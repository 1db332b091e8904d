// MeshDocument <file.obj> [directory]
// MeshDocument --compare <file.obj> <file.packets>
//
// Reads an OBJ file into a document, writes the document as a packet file in all four forms, reads each file back and
// compares what it holds with the document. The files are named for the OBJ file and stay in the directory. The second
// form compares a packet file that is there with an OBJ file.
//
// Exit codes: 0 when everything came back equal, 1 when something is wrong, 2 for wrong arguments.

#include "DocumentReader.h"
#include "DocumentWriter.h"
#include "InputFile.h"
#include "MeshModel.h"
#include "ObjFile.h"
#include "Support/ProgressBar.h"

#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/DataFiles/ioBufferedStreamOutput.h"
#include "Base/OS/qvOSProtectedWrite.h"
#include "Base/Strings/qvStringIString.h"
#include "Base/Utility/qvUtilProgress.h"

#include <chrono>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <iterator>
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

// What a long run shows on a terminal, in phases of one share each.
struct Report {
    explicit Report(std::size_t numPhases) : share(1.0 / static_cast<double>(numPhases)) {}

    double share;
    qvUtil::Progress progress;
    qvUtil::Progress phase;
    ProgressBar bar{ProgressBar::Use::whereATerminalIs, progress}; // goes first
};

qvString::IString fileName(fs::path const & path) { return qvString::IString(path.c_str(), qvString::UTF8); }

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

void readObj(char const * name, mesh::Document & document, Report & report) {
    document.name = fs::path(name).stem().c_str();
    report.progress.setCaption("reading");
    report.progress.subPhase(report.share, report.phase);
    long long const skipped = mesh::readObjFile(name, document, report.phase);
    report.bar.clear();
    std::printf("%s: %d meshes, %d groups, %d materials, %d positions; %lld statements skipped\n", name,
                document.meshes.size(), document.groups.size(), document.materials.size(), document.positions.size(),
                skipped);
}

// The file appears, or replaces another one, when it is whole.
void writeFile(fs::path const & path, Form const & form, mesh::Document const & document, qvUtil::Progress & progress) {
    qvOS::ProtectedWrite saving{qvOS::Filename(fileName(path))};
    bool isWritten = saving.init();
    if (isWritten) {
        ioBufferedStreamOutput stream;
        stream.openFile(saving.getTempFilename().name());
        isWritten = stream.good() && mesh::writeDocument(stream, form.method, document, progress);
        stream.close();
        isWritten = isWritten && stream.good();
        if (!isWritten)
            saving.invalidate();
    }
    if (!saving.finalize() || !isWritten)
        throw Failure(path.string() + ": cannot be written");
}

mesh::ReadResult readFile(fs::path const & path, mesh::Document & document, qvUtil::Progress & progress) {
    mesh::InputFile file(fileName(path), progress);
    if (file.open(qvOS::OpenRead))
        throw Failure(path.string() + ": cannot be opened");
    ioBufferedStreamInput stream;
    stream.openIOStream(&file);
    return mesh::readDocument(stream, file.size(), document);
}

// One row of the table; whether the document came back.
bool tryForm(Form const & form, fs::path const & path, mesh::Document const & document, Report & report) {
    qvUtil::Progress step;
    report.progress.setCaption(form.name);
    report.progress.subPhase(report.share, report.phase);
    report.phase.subPhase(0.4, step);
    auto const writing = Clock::now();
    writeFile(path, form, document, step);
    double const writeTime = millisecondsSince(writing);

    report.phase.subPhase(0.4, step);
    mesh::Document copy;
    auto const reading = Clock::now();
    mesh::ReadResult const result = readFile(path, copy, step);
    double const readTime = millisecondsSince(reading);

    report.phase.subPhase(0.2, step);
    qvString::CString verdict = result.problem;
    if (verdict.isEmpty())
        verdict = mesh::compareDocuments(document, copy, form.exactness);
    bool const isEqual = verdict.isEmpty();
    if (isEqual)
        verdict = form.exactness == mesh::Exactness::bits ? "equal" : "equal to the digits written";
    report.bar.clear();
    std::printf("%-13s %10llu %9d %10.2f %10.2f  %s\n", form.name, static_cast<unsigned long long>(fs::file_size(path)),
                result.packets, writeTime, readTime, verdict.asChar());
    return isEqual;
}

int run(char const * objName, fs::path const & directory) {
    Report report(1 + std::size(forms));
    mesh::Document document;
    readObj(objName, document, report);
    std::printf("%-13s %10s %9s %10s %10s  %s\n", "form", "bytes", "packets", "write/ms", "read/ms", "verdict");
    bool allEqual = true;
    for (Form const & form : forms) {
        fs::path const name = fs::path(objName).stem().string() + "-" + form.name + ".packets";
        allEqual = tryForm(form, directory / name, document, report) && allEqual;
    }
    return allEqual ? 0 : 1;
}

// Whether a packet file that was written before holds what an OBJ file holds.
int compareFiles(char const * objName, fs::path const & packets) {
    Report report(3);
    mesh::Document document;
    readObj(objName, document, report);
    mesh::Document copy;
    report.progress.subPhase(report.share, report.phase);
    mesh::ReadResult const result = readFile(packets, copy, report.phase);
    report.progress.subPhase(report.share, report.phase);
    qvString::CString verdict = result.problem;
    bool isEqual = false;
    for (mesh::Exactness const exactness : {mesh::Exactness::bits, mesh::Exactness::decimalText}) {
        if (result.problem.isEmpty() && !isEqual)
            verdict = mesh::compareDocuments(document, copy, exactness);
        isEqual = verdict.isEmpty();
    }
    report.bar.clear();
    std::printf("%s: %s\n", packets.c_str(), isEqual ? "equal" : verdict.asChar());
    return isEqual ? 0 : 1;
}

constexpr char usage[] = "usage: MeshDocument <file.obj> [directory]\n"
                         "       MeshDocument --compare <file.obj> <file.packets>\n";

} // namespace

int main(int argc, char ** argv) {
    bool const isComparison = argc == 4 && std::strcmp(argv[1], "--compare") == 0;
    if (!isComparison && (argc < 2 || argc > 3 || argv[1][0] == '-')) {
        std::fputs(usage, stderr);
        return 2;
    }
    try {
        return isComparison ? compareFiles(argv[2], argv[3]) : run(argv[1], argc == 3 ? argv[2] : ".");
    } catch (std::exception const & failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
}
