// What goes into a package and comes out of it.

#include "Base/DataFiles/Internal/ioClosing.h"
#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/DataFiles/ioPackageFile.h"
#include "Base/OS/qvOSFile.h"
#include "Base/OS/qvOSFileOperations.h"
#include "Base/OS/qvOSIOStream.h"
#include "Base/OS/qvOSTemporaryFiles.h"
#include "Base/Platform/PlatformFileSystem.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

using qvOS::Filename;
using qvOS::FileStatus;
using qvPlatform::FileFacts;
using qvPlatform::Links;
using qvString::IString;
using qvUtil::Error;

namespace {

// Bytes on their way from one stream to another: as many at once as are worth it for so large a whole.
class Block {
public:
    explicit Block(std::int64_t whole)
        : size_(static_cast<int>(std::clamp<std::int64_t>(whole + 1, smallest, largest))),
          bytes_(new char[static_cast<std::size_t>(size_)]) {}

    int size() const { return size_; }
    char * get() const { return bytes_.get(); }

private:
    // The largest moves through a chain without filters uncopied.
    static constexpr std::int64_t smallest = 4096;
    static constexpr std::int64_t largest = 256 * 1024;

    int size_;
    std::unique_ptr<char[]> bytes_;
};

bool isAtEnd(ioBufferedStreamInput const & stream) {
    return stream.getStatus() == ioStreamEOF || stream.getStatus() == ioStreamCompressEnd;
}

bool isSound(ioBufferedStreamInput const & stream) { return stream.good() || stream.getStatus() == ioStreamEOF; }

bool isSeparator(wchar_t c) { return c == L'/' || c == L'\\'; }

bool isSameFile(IString const & a, IString const & b) {
    FileFacts first;
    FileFacts second;
    return qvPlatform::queryFile(a, Links::follow, first).good() &&
           qvPlatform::queryFile(b, Links::follow, second).good() && first.identity == second.identity;
}

Error couldNotReadEntry(IString const & name) {
    return Error(7, L"Could not read package file entry: %S\n", name.asWChar());
}

Error notAllowed(IString const & name) {
    return Error(12, L"File is using a name which is not allowed: %S", name.asWChar());
}

// What extracting writes to: a new file beside the target, which takes its place at the end. A target that is a device
// or the like is written itself.
class Target {
public:
    explicit Target(IString const & name) : name_(name) {}
    Target(Target const &) = delete;
    Target & operator=(Target const &) = delete;
    ~Target() {
        if (!beside_.isEmpty())
            qvPlatform::removeFile(beside_);
    }

    // Never the package itself.
    bool open(IString const & package) {
        FileFacts facts;
        bool const isThere = qvPlatform::queryFile(name_, Links::keep, facts).good();
        if (isThere && (facts.kind == qvPlatform::FileKind::directory || isSameFile(name_, package)))
            return false;
        if (isThere && facts.kind == qvPlatform::FileKind::other) {
            stream_.openFile(name_);
            return stream_.good();
        }
        IString unique;
        if (!qvPlatform::makeUniqueFile(Filename(name_).dirname(), L"ext", qvPlatform::Access::byMask, unique).good())
            return false;
        beside_.swap(unique);
        stream_.openFile(beside_);
        return stream_.good();
    }
    ioBufferedStreamOutput & stream() { return stream_; }
    bool finish() {
        stream_.close();
        if (!stream_.good())
            return false;
        if (beside_.isEmpty())
            return true;
        if (!qvPlatform::replaceFile(beside_, name_).good())
            return false;
        beside_ = IString();
        return true;
    }

private:
    IString const & name_;
    IString beside_; // empty when there is none to remove
    ioClosing<ioBufferedStreamOutput> stream_;
};

// Whether the way to a file, which by its name lies below a directory, leaves that through a symbolic link.
bool leadsOut(IString const & directory, IString const & file) {
    for (IString way = Filename(file).dirname(); way.length() > directory.length(); way = Filename(way).dirname()) {
        FileFacts facts;
        bool const isLink =
            qvPlatform::queryFile(way, Links::keep, facts).good() && facts.kind == qvPlatform::FileKind::symbolicLink;
        if (!isLink)
            continue;
        IString root;
        IString resolved;
        if (!qvPlatform::resolvedName(directory.isEmpty() ? IString(L".") : directory, root).good() ||
            !qvPlatform::resolvedName(way, resolved).good())
            return true;
        if (root[root.length() - 1] != Filename::separator())
            root.append(Filename::separator());
        if (resolved.find(root) != 0)
            return true;
    }
    return false;
}

} // namespace

// What is stored for one entry.
struct ioPackageFile::Source {
    IString const & name;
    std::int64_t size;
    std::int64_t timestamp;
    bool compressed;
};

// The packed form of a file on its way into the package: a small one in memory, a large one in a temporary file, which
// is deleted in the end.
class ioPackageFile::Packed : private qvOS::IOStream {
public:
    explicit Packed(std::int64_t size) : isInMemory_(size <= mostInMemory) {}
    Packed(Packed const &) = delete;
    Packed & operator=(Packed const &) = delete;
    ~Packed() override {
        if (!file_.name().isEmpty())
            static_cast<void>(qvOS::fileDelete(file_));
    }

    void open(ioBufferedStreamOutput & stream) {
        if (isInMemory_)
            return stream.openIOStream(this);
        file_ = qvOS::createTmpFilename(IString(), nullptr);
        stream.openFile(file_.name());
    }
    void open(ioBufferedStreamInput & stream) {
        at_ = 0;
        if (isInMemory_)
            return stream.openIOStream(this);
        stream.openFile(file_.name());
    }
    // -1 when it is not known.
    std::int64_t size() const {
        FileStatus status;
        if (isInMemory_)
            return static_cast<std::int64_t>(bytes_.size());
        return !qvOS::File::query(file_, status) && status.exists() ? status.getSize() : -1;
    }

private:
    static constexpr std::int64_t mostInMemory = 1 << 20;

    Error read(void * buffer, unsigned int size, unsigned int * count) override {
        *count = static_cast<unsigned int>(bytes_.copy(static_cast<char *>(buffer), size, at_));
        at_ += *count;
        return *count < size ? qvOS::File::getError(3) : Error();
    }
    Error write(void const * buffer, unsigned int size, unsigned int * count) override {
        bytes_.append(static_cast<char const *>(buffer), size);
        *count = size;
        return Error();
    }

    bool isInMemory_;
    std::string bytes_;
    std::size_t at_ = 0;
    Filename file_;
};

// ---- Names

IString ioPackageFile::cleanupName(IString const & name) const {
    IString clean;
    clean.assign(name);
    for (unsigned i = 0; i < clean.length(); ++i)
        if (name[i] == L'\\')
            clean[i] = L'/';
    unsigned start = clean.length() > 1 && clean[1] == L':' ? 2 : 0;
    // What is cut off in front is cut off over and over, and a drive may stand behind it again.
    wchar_t const * const text = clean.asWChar();
    for (unsigned const length = clean.length();;) {
        unsigned const left = length - start;
        wchar_t const * const at = text + start;
        if (left > 2 && at[0] == L'.' && at[1] == L'/')
            start += 2;
        else if (left > 3 && at[0] == L'.' && at[1] == L'.' && at[2] == L'/')
            start += 3;
        else if (left > 0 && at[0] == L'/')
            start += 1;
        else
            break;
        if (length - start > 1 && text[start + 1] == L':')
            start += 2;
    }
    clean.erase(0, start);
    return clean;
}

Error ioPackageFile::verifyAddEntry(IString const & name) const {
    if (packageName_.isEmpty())
        return Error(3, "The package file has not been opened yet.");
    if (!writable_)
        return Error(4, "This package file can not be modified as it is not writable.");
    if (name.isEmpty())
        return Error(11, "The name can not be empty.");
    if (qvOS::isWindowsReservedDeviceName(Filename(name)))
        return Error(11, L"File is using a windows reserved device name.  Please choose another name: %S",
                     name.asWChar());
    // The directory ends a name at its first zero.
    if (name.find(L'\0') != IString::npos)
        return notAllowed(name);
    IString const component = Filename(name).basename();
    return component == L"." || component == L".." ? notAllowed(name) : Error();
}

// ---- Into the package

Error ioPackageFile::addEntry(IString const & file, IString const & wantedName, bool compress) {
    IString const name = cleanupName(wantedName);
    if (Error const error = verifyAddEntry(name))
        return error;
    FileStatus status;
    if (qvOS::File::query(file, status) || !status.exists())
        return Error(6, L"File does not exist: %S\n", file.asWChar());
    if (!status.isReadable())
        return Error(7, L"Could not read file: %S\n", file.asWChar());
    if (isSameFile(file, packageName_))
        return Error(15, "The source entry can not be in the package.");
    Source const source{name, status.getSize(), status.getLastModifiedDate(), false};
    if (!compress)
        return copyFileIntoPackage(file, source);
    Packed packed(source.size);
    std::int64_t packedSize = 0;
    if (Error const error = compressFile(file, packed, source.size, packedSize))
        return error;
    if (packedSize >= source.size)
        return copyFileIntoPackage(file, source);
    ioClosing<ioBufferedStreamInput> stream;
    packed.open(stream);
    if (!stream.good())
        return Error(7, L"Could not read file: %S\n", file.asWChar());
    return copyStreamIntoPackage(stream, Source{name, packedSize, source.timestamp, true});
}

Error ioPackageFile::compressFile(IString const & source, Packed & target, std::int64_t size,
                                  std::int64_t & compressedSize) const {
    compressedSize = 0;
    if (size == 0)
        return Error();
    ioClosing<ioBufferedStreamInput> input;
    input.openFile(source);
    ioClosing<ioBufferedStreamOutput> output;
    target.open(output);
    output.compress(true);
    output.checksum(true);
    Block const block(size);
    std::int64_t copied = 0;
    // One byte more than there should be is enough to know that it has grown.
    while (output.good() && copied <= size) {
        int const count = input.readData(block.get(), block.size());
        if (count <= 0)
            break;
        output.writeData(block.get(), count);
        copied += count;
    }
    output.close();
    if (copied > size || (isAtEnd(input) && copied != size))
        return Error(8, L"While compressing file it changed size: %S", source.asWChar());
    if (!isAtEnd(input))
        return Error(9, L"Error reading file: %S", source.asWChar());
    compressedSize = target.size();
    if (!output.good() || compressedSize < 0)
        return Error(10, L"Error compressing file: %S", source.asWChar());
    return Error();
}

Error ioPackageFile::copyFileIntoPackage(IString const & file, Source const & source) {
    ioClosing<ioBufferedStreamInput> stream;
    stream.openFile(file);
    if (!stream.good())
        return Error(7, L"Could not read file: %S\n", file.asWChar());
    return copyStreamIntoPackage(stream, source);
}

Error ioPackageFile::copyStreamIntoPackage(ioBufferedStreamInput & stream, Source const & source) {
    if (Error const error = openPackageForOutput())
        return error;
    if (auto const place = directory_.find(source.name); place != directory_.end())
        freeEntry(place->second);
    int const index = createEntry(source.size);
    if (!output_.seek(entries_[index].offset_)) {
        freeEntry(index);
        return Error(10, L"Error writing entry: %S", source.name.asWChar());
    }
    Block const block(source.size);
    std::int64_t copied = 0;
    bool hasMore = false;
    while (output_.good() && !hasMore) {
        int const count = stream.readData(block.get(), block.size());
        if (count <= 0)
            break;
        // What the source has grown by does not belong into the package, where somebody else's bytes may follow.
        int const wanted = static_cast<int>(std::min<std::int64_t>(count, source.size - copied));
        output_.writeData(block.get(), wanted);
        copied += wanted;
        hasMore = wanted < count;
    }
    output_.flush();
    Error error;
    if (!isSound(stream))
        error = Error(9, L"Error reading file for entry: %S", source.name.asWChar());
    else if (hasMore || stream.good() || copied != source.size)
        error = Error(16, L"While writing file for entry it changed size: %S", source.name.asWChar());
    else if (!output_.good())
        error = Error(10, L"Error writing entry: %S", source.name.asWChar());
    if (!error) {
        entries_[index].name_.assign(source.name);
        entries_[index].timestamp_ = source.timestamp;
        entries_[index].compressed_ = source.compressed;
        enterName(index, source.name);
        return Error();
    }
    freeEntry(index);
    return error;
}

Error ioPackageFile::addEntry(ioPackageFileEntry const * entry, IString const & wantedName) {
    IString const name = cleanupName(wantedName);
    if (Error const error = verifyAddEntry(name))
        return error;
    if (entry == nullptr)
        return Error(7, "The given package file entry is NULL.");
    if (entry->getPackage() == this)
        return Error(15, "The source entry can not be in the package.");
    return copyEntryIntoPackage(entry, name);
}

Error ioPackageFile::copyEntryIntoPackage(ioPackageFileEntry const * entry, IString const & name) {
    if (name.isEmpty())
        return Error(11, "The name can not be empty.");
    if (directory_.contains(name))
        return Error(14, L"The entry is already present in the package: %S", name.asWChar());
    ioClosing<ioBufferedStreamInput> stream;
    stream.openPackageFileEntry(entry);
    if (!isSound(stream))
        return couldNotReadEntry(name);
    return copyStreamIntoPackage(stream, Source{name, entry->size_, entry->timestamp_, entry->compressed_});
}

Error ioPackageFile::deleteEntry(IString const & name) {
    if (packageName_.isEmpty())
        return Error(3, "The package file has not been opened yet.");
    if (!writable_)
        return Error(4, "This package file can not be modified as it is not writable.");
    auto const place = directory_.find(name);
    if (place == directory_.end())
        return Error(13, L"Can not delete named entry as it does not exist: %S", name.asWChar());
    freeEntry(place->second);
    return Error();
}

// ---- Out of the package

Error ioPackageFile::extractEntry(ioPackageFileEntry const * entry, IString const & file, std::int64_t limit) const {
    if (entry == nullptr)
        return Error();
    IString const directory = Filename(file).dirname();
    if (!directory.isEmpty()) {
        if (Error const error = qvOS::File(directory).makeDirectoryAll())
            return Error(5, IString(error.message()));
    }
    closePackageForOutput();
    ioClosing<ioBufferedStreamInput> input;
    input.openPackageFileEntry(entry);
    if (!isSound(input))
        return couldNotReadEntry(entry->getName());
    if (entry->getCompressed()) {
        input.compress(true);
        input.checksum(true);
    }
    Target target(file);
    if (!target.open(packageName_))
        return Error(2, L"Can not create file: %S", file.asWChar());
    // What unpacks is several times as much.
    Block const block(entry->getCompressed() ? std::min(entry->getSize(), std::int64_t{16384}) * 4 : entry->getSize());
    std::int64_t written = 0;
    while (target.stream().good()) {
        int const count = input.readData(block.get(), block.size());
        if (count <= 0)
            break;
        written += count;
        if (limit >= 0 && written > limit)
            return Error(10, L"Error writing file: %S", file.asWChar());
        target.stream().writeData(block.get(), count);
    }
    bool const isRead = isAtEnd(input) && (entry->getCompressed() || written == entry->getSize());
    if (target.stream().good() && !isRead)
        return Error(9, L"Error reading package file entry: %S", entry->getName().asWChar());
    return target.finish() ? Error() : Error(10, L"Error writing file: %S", file.asWChar());
}

Error ioPackageFile::placeBelow(IString const & directory, IString const & name, IString & file) {
    bool const hasDrive = name.length() > 1 && name[1] == L':';
    if (name.isEmpty() || isSeparator(name[0]) || hasDrive || name.find(L'\0') != IString::npos)
        return notAllowed(name);
    int depth = 0;
    unsigned start = 0;
    for (unsigned i = 0; i <= name.length(); ++i) {
        if (i < name.length() && !isSeparator(name[i]))
            continue;
        IString const part = name.substr(start, i - start);
        bool const isLast = i == name.length();
        if (isLast && (part == L"." || part == L".."))
            return notAllowed(name);
        depth += part == L".." ? -1 : part.isEmpty() || part == L"." ? 0 : 1;
        if (depth < 0)
            return notAllowed(name);
        start = i + 1;
    }
    if (depth == 0)
        return notAllowed(name);
    Filename const below{Filename(directory), Filename(name)};
    IString const & whole = below.name();
    if (leadsOut(Filename(directory).name(), whole))
        return notAllowed(name);
    file.assign(whole);
    return Error();
}

Error ioPackageFile::expand(IString const & directory) const {
    if (!directory.isEmpty()) {
        if (Error const error = qvOS::File(directory).makeDirectoryAll())
            return Error(5, IString(error.message()));
    }
    Error refused;
    for (auto const & [name, index] : directory_) {
        IString file;
        if (Error const error = placeBelow(directory, name, file)) {
            if (!refused)
                refused = error;
            continue;
        }
        if (Error const error = extractEntry(&entries_[index], file))
            return error;
    }
    return refused;
}

// ---- A compact copy

Error ioPackageFile::write(IString const & name) {
    if (packageName_.isEmpty())
        return Error(3, "The package file has not been opened yet.");
    FileStatus status;
    bool const isThere = !qvOS::File::query(name, status) && status.exists();
    if (isThere && (isSameFile(name, packageName_) || qvOS::fileDelete(Filename(name))))
        return Error(4, "The pacakge is not writable.");
    ioPackageFile copy;
    if (Error const error = copy.open(name))
        return error;
    if (!copy.writable_)
        return Error(4, "The package file is not writable.");
    closePackageForOutput();
    for (auto const & [entryName, index] : directory_) {
        if (Error const error = copy.copyEntryIntoPackage(&entries_[index], entryName))
            return error;
    }
    if (Error const error = copy.update())
        return error;
    closePackageForOutput();
    copy.closePackageForOutput();
    packageName_.swap(copy.packageName_);
    std::swap(writable_, copy.writable_);
    std::swap(dirty_, copy.dirty_);
    std::swap(pointerOffset_, copy.pointerOffset_);
    std::swap(dataOffset_, copy.dataOffset_);
    std::swap(freeCount_, copy.freeCount_);
    directory_.swap(copy.directory_);
    entries_.swap(copy.entries_);
    places_.swap(copy.places_);
    for (ioPackageFileEntry & entry : entries_)
        entry.package_ = this;
    return Error();
}
