#include "Base/DataFiles/ioPackageFile.h"

#include "Base/DataFiles/Internal/ioClosing.h"
#include "Base/DataFiles/Internal/ioPackageIO.h"
#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/DataFiles/ioReadContext.h"
#include "Base/DataFiles/ioWriteContext.h"
#include "Base/OS/qvOSFile.h"
#include "Base/OS/qvOSFilename.h"
#include "Base/Platform/PlatformFileSystem.h"
#include "Base/Strings/qvStringFormat.h"

#include <cstring>
#include <memory>

using qvString::IString;
using qvUtil::Error;

namespace {

constexpr unsigned char markByte = 0x8F;
constexpr unsigned char otherMarkByte = 0x2E;
constexpr char magicLines[] = "TrelmarkPortablePackageFile\neliFegakcaPelbatroPkramlerT\n";
constexpr int magicLength = sizeof magicLines - 1;
constexpr char versionLine[] = "1\n";
constexpr int versionLength = sizeof versionLine - 1;
constexpr char headerEnd[] = "@\n";

// The directory pointer: digits, blanks up to the last byte, a newline.
constexpr int pointerLength = 24;
constexpr std::int64_t noDirectory = -1;

Error notAPackage(IString const & name) { return Error(17, L"The file is not a package file: %S", name.asWChar()); }

Error errorReadingDirectory(IString const & name) { return Error(17, L"Error reading directory: %S", name.asWChar()); }

Error errorWritingDirectory(IString const & name) { return Error(10, L"Error writing directory: %S", name.asWChar()); }

// Reads from a package's header, and counts what it has taken: the stream's own position runs ahead.
class HeaderReader {
public:
    explicit HeaderReader(ioBufferedStreamInput & stream) : stream_(stream) {}

    bool read(char * bytes, int count) {
        int const got = stream_.readData(bytes, count);
        position_ += got;
        return got == count;
    }
    bool expect(char const * text, int length) {
        char bytes[magicLength];
        return read(bytes, length) && std::memcmp(bytes, text, static_cast<std::size_t>(length)) == 0;
    }
    // Whether what follows is the text in front of the directory pointer.
    bool passHeader() {
        char mark = 0;
        if (!read(&mark, 1) ||
            (static_cast<unsigned char>(mark) != markByte && static_cast<unsigned char>(mark) != otherMarkByte))
            return false;
        if (!expect(magicLines, magicLength) || !expect(versionLine, versionLength))
            return false;
        char c = 0;
        do {
            if (!read(&c, 1))
                return false;
        } while (c != headerEnd[0]);
        return read(&c, 1);
    }
    std::int64_t position() const { return position_; }

private:
    ioBufferedStreamInput & stream_;
    std::int64_t position_ = 0;
};

// The directory in which a file lies, whatever its name leads through.
IString directoryOf(IString const & file) {
    IString resolved;
    if (!qvPlatform::resolvedName(file, resolved).good())
        return qvOS::Filename(file).dirname();
    unsigned const last = resolved.rfind(qvPlatform::nameSeparator());
    return last == IString::npos ? IString() : resolved.substr(0, last + 1);
}

} // namespace

ioPackageFile::ioPackageFile() { reset(); }

ioPackageFile::~ioPackageFile() { close(); }

// The state of a new object.
void ioPackageFile::reset() {
    close();
    packageName_ = IString();
    fileDevice_ = 0;
    fileNumber_ = 0;
    writable_ = false;
    dirty_ = false;
    pointerOffset_ = -1;
    dataOffset_ = -1;
    directory_.clear();
    entries_.clear();
    places_.clear();
    freeCount_ = 0;
    insertRecord(0, 0, -1);
    entries_.back().name_ = L".";
}

qvPlatform::FileIdentity ioPackageFile::identity() const { return {fileDevice_, fileNumber_}; }

void ioPackageFile::close() {
    closePackageForOutput();
    input_.close();
}

// ---- Opening

Error ioPackageFile::open(IString const & name) {
    reset();
    directoryFault_ = nullptr;
    qvOS::FileStatus status;
    Error error = qvOS::File::query(name, status);
    packageName_.assign(name);
    if (!error) {
        if (status.exists()) {
            error = readPackageHeader();
            if (!error)
                error = readDirectory();
        } else
            error = createPackage();
    }
    if (!error)
        error = qvOS::File::query(name, status);
    if (error) {
        reset();
        return error;
    }
    writable_ = status.isWritable();
    qvPlatform::FileFacts facts;
    if (qvPlatform::queryFile(packageName_, qvPlatform::Links::follow, facts).good()) {
        fileDevice_ = facts.identity.device;
        fileNumber_ = facts.identity.number;
    }
    return Error();
}

Error ioPackageFile::createPackage() {
    ioClosing<ioBufferedStreamOutput> file;
    file.openFile(packageName_);
    bool const isOpen = file.good();
    file.close();
    if (!isOpen || !file.good())
        return Error(2, L"Can not create file: %S", packageName_.asWChar());
    dirty_ = true;
    return writePackageHeader();
}

Error ioPackageFile::openPackageForOutput() {
    // A chain that has failed stays so; a new one goes on.
    if (outputOpen_ && !output_.good())
        closePackageForOutput();
    if (outputOpen_)
        return Error();
    input_.close();
    output_.resetStatus();
    output_.truncateOnOpen(false);
    output_.openFile(packageName_);
    outputOpen_ = output_.good();
    if (outputOpen_)
        return Error();
    output_.close();
    return Error(15, L"Could not open package for write: %S", packageName_.asWChar());
}

void ioPackageFile::closePackageForOutput() const {
    if (outputOpen_)
        output_.close();
    outputOpen_ = false;
}

// ---- The header

Error ioPackageFile::writePackageHeader() {
    if (Error const error = openPackageForOutput())
        return error;
    char const mark = static_cast<char>(markByte);
    output_.writeData(&mark, 1);
    output_.writeString(magicLines);
    output_.writeString(versionLine);
    output_.writeString(headerEnd);
    pointerOffset_ = output_.tell();
    output_.flush();
    if (pointerOffset_ < 0)
        return errorWritingDirectory(packageName_);
    std::int64_t end = 0;
    if (Error const error = writeDirectoryPointer(noDirectory, end))
        return error;
    updateDirectoryEntry(end);
    dataOffset_ = end;
    return Error();
}

Error ioPackageFile::writeDirectoryPointer(std::int64_t value, std::int64_t & end) {
    char text[pointerLength + 4];
    KT_snprintf(text, sizeof text, "%-23lld\n", static_cast<long long>(value));
    if (Error const error = openPackageForOutput())
        return error;
    if (!output_.seek(pointerOffset_))
        return errorWritingDirectory(packageName_);
    output_.writeData(text, pointerLength);
    end = output_.tell();
    output_.flush();
    return end >= 0 && output_.good() ? Error() : errorWritingDirectory(packageName_);
}

Error ioPackageFile::readPackageHeader() {
    closePackageForOutput();
    ioClosing<ioBufferedStreamInput> stream;
    stream.openFile(packageName_);
    if (!stream.good())
        return Error(7, L"Could not read the package file: %S", packageName_.asWChar());
    HeaderReader header(stream);
    if (!header.passHeader())
        return notAPackage(packageName_);
    std::int64_t const pointerOffset = header.position();
    char text[pointerLength + 1];
    if (!header.read(text, pointerLength))
        return notAPackage(packageName_);
    text[pointerLength] = '\0';
    std::int64_t const pointer = asciiToInt64(text);
    qvOS::FileStatus status;
    bool const isAsked = !qvOS::File::query(packageName_, status);
    if (!isAsked || pointer <= pointerOffset || pointer > status.getSize())
        return notAPackage(packageName_);
    updateDirectoryEntry(pointer);
    pointerOffset_ = pointerOffset;
    dataOffset_ = header.position();
    return Error();
}

bool ioPackageFile::isFilePackageFile(IString const & name) {
    qvOS::FileStatus status;
    if (name.isEmpty() || qvOS::File::query(name, status) || !status.isReadable())
        return false;
    ioPackageFile package;
    package.packageName_.assign(name);
    return !package.readPackageHeader();
}

// ---- The directory

Error ioPackageFile::update() {
    if (packageName_.isEmpty())
        return Error(3, "The package file has not been opened yet.");
    if (!writable_)
        return Error(4, "The package file is not writable.");
    return dirty_ ? writeDirectory() : Error();
}

// The bytes that the directory names, and the directory, are safe before the pointer makes it the valid one, and the
// pointer is safe when this returns: with it the name of the file in its own directory. A directory that could not be
// written whole gets no pointer: as long as nothing was appended, the old pointer may still lead to a whole one.
Error ioPackageFile::writeDirectory() {
    std::int64_t const offset = entries_.back().offset_;
    if (Error const error = openPackageForOutput())
        return error;
    Error error = output_.seek(offset) ? writeRecords() : errorWritingDirectory(packageName_);
    if (!error && !qvPlatform::syncFile(packageName_).good())
        error = errorWritingDirectory(packageName_);
    if (error)
        return error;
    std::int64_t end = 0;
    error = writeDirectoryPointer(offset, end);
    if (!error &&
        (!qvPlatform::syncFile(packageName_).good() || !qvPlatform::syncDirectory(directoryOf(packageName_)).good()))
        error = errorWritingDirectory(packageName_);
    return error;
}

Error ioPackageFile::writeRecords() {
    ioPackageIO::PackageRegistry registry(false);
    std::unique_ptr<ioWriteContext> const context(ioWriteContextAlloc(output_, ioWriteBinary, &registry));
    if (context == nullptr)
        return Error(1, "Internal error.");
    context->startFile();
    for (ioPackageFileEntry const & entry : entries_) {
        context->startPacket(ioPackageIO::entryTypeName, nullptr);
        context->writeCString(entry.name_.asUTF8());
        context->writeInt64(entry.offset_);
        context->writeInt64(entry.size_);
        context->writeInt64(entry.timestamp_);
        context->writeBool(entry.compressed_);
        context->endPacket();
    }
    context->endFile();
    output_.flush();
    return context->good() && output_.good() ? Error() : errorWritingDirectory(packageName_);
}

Error ioPackageFile::readDirectory() {
    std::int64_t const end = entries_.back().offset_;
    if (end <= 0)
        return Error();
    closePackageForOutput();
    ioClosing<ioBufferedStreamInput> stream;
    stream.openFile(packageName_);
    if (!stream.seek(end) || !stream.good())
        return Error(17, L"Can not open directory: %S", packageName_.asWChar());
    ioPackageIO::PackageRegistry registry(true);
    std::unique_ptr<ioReadContext> const context(ioReadContextAlloc(stream, &registry));
    bool isRead = false;
    // No other form is written, and a mismatch in one with tags would end the process.
    if (context != nullptr &&
        (context->getReadMethod() == ioReadBinarySameEndian || context->getReadMethod() == ioReadBinarySwapped)) {
        entries_.clear();
        places_.clear();
        ioPackageIO::PackageReadContext client(*context, *this);
        isRead = context->readFile(client) == ioGood && takeRecords(end);
    }
    if (!isRead)
        return errorReadingDirectory(packageName_);
    dirty_ = false;
    return Error();
}
