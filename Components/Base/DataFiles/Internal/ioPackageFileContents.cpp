// What goes into a package.

#include "Base/DataFiles/Internal/ioClosing.h"
#include "Base/DataFiles/Internal/ioPackageCopy.h"
#include "Base/DataFiles/Internal/ioPackageFileSourceImpl.h"
#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/DataFiles/ioPackageFile.h"
#include "Base/OS/qvOSFileOperations.h"
#include "Base/OS/qvOSFilename.h"
#include "Base/Platform/PlatformFileSystem.h"
#include "Base/Strings/Internal/Utf8.h"
#include "Base/Utility/qvUtilProgress.h"

#include <algorithm>
#include <utility>

using qvOS::Filename;
using qvString::IString;
using qvUtil::Error;

namespace {

// Of the work of adding a file compressed.
constexpr double shareOfPacking = 0.9;

Error isThePackage() { return Error(15, "The source entry can not be in the package."); }

// UTF-8 has no form for half of a pair, and what is put in its place would be the name of another entry.
bool hasHalfPair(IString const & name) {
    wchar_t const * const end = name.asWChar() + name.length();
    for (wchar_t const * at = name.asWChar(); at != end;) {
        auto const [value, length] = qvString::utf8::decodeUnits(at, end);
        if (length == 1 && qvString::utf8::isSurrogate(*at))
            return true;
        at += length;
    }
    return false;
}

} // namespace

// Bytes that are about to go in under a name.
struct ioPackageFile::Source {
    IString const & name;
    std::int64_t size;
    std::int64_t timestamp;
    bool compressed;
    qvUtil::Progress * progress;
};

// ---- Names

IString ioPackageFile::cleanupName(IString const & name) const {
    IString clean;
    clean.assign(name);
    for (unsigned i = clean.find(L'\\'); i != IString::npos; i = clean.find(L'\\', i))
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
    Filename const normal(name);
    if (qvOS::isWindowsReservedDeviceName(normal))
        return Error(11, L"File is using a windows reserved device name.  Please choose another name: %S",
                     name.asWChar());
    // The directory ends a name at its first zero, and holds UTF-8.
    if (name.find(L'\0') != IString::npos || hasHalfPair(name))
        return ioPackageCopy::notAllowed(name);
    IString const component = normal.basename();
    return component == L"." || component == L".." ? ioPackageCopy::notAllowed(name) : Error();
}

// ---- Into the package

// A new record that is free again, unless it gets its name.
class ioPackageFile::NewRecord {
public:
    NewRecord(ioPackageFile & package, std::int64_t size) : package_(package), index_(package.createEntry(size)) {}
    NewRecord(NewRecord const &) = delete;
    NewRecord & operator=(NewRecord const &) = delete;
    ~NewRecord() {
        if (!isNamed_)
            package_.freeEntry(index_);
    }

    std::int64_t offset() const { return package_.entries_[index_].offset_; }
    void name(Source const & source) {
        ioPackageFileEntry & entry = package_.entries_[index_];
        entry.name_.assign(source.name);
        entry.timestamp_ = source.timestamp;
        entry.compressed_ = source.compressed;
        package_.enterName(index_, source.name);
        isNamed_ = true;
    }

private:
    ioPackageFile & package_;
    int index_;
    bool isNamed_ = false;
};

// Makes a record for the source, in the place of one that has its name; `write` puts the bytes into the output, and
// gives the failure of the source's side.
template <class Write>
Error ioPackageFile::putIntoPackage(Source const & source, Write write) {
    if (Error const error = openPackageForOutput())
        return error;
    if (auto const place = directory_.find(source.name); place != directory_.end())
        freeEntry(place->second);
    NewRecord record(*this, source.size);
    auto const notWritten = [&] { return Error(10, L"Error writing entry: %S", source.name.asWChar()); };
    if (!output_.seek(record.offset()))
        return notWritten();
    Error const error = write();
    output_.flush();
    if (error)
        return error;
    if (!output_.good())
        return notWritten();
    record.name(source);
    if (source.progress != nullptr)
        source.progress->set(1);
    return Error();
}

Error ioPackageFile::addEntry(IString const & file, IString const & wantedName, bool compress,
                              qvUtil::Progress * progress) {
    IString const name = cleanupName(wantedName);
    if (Error const error = verifyAddEntry(name))
        return error;
    ioPackageFileSource::Impl source(file);
    if (Error const error = source.look())
        return error;
    if (source.isFile(identity()))
        return isThePackage();
    if (!compress)
        return copySourceIntoPackage(source, name, progress);
    qvUtil::Progress packing;
    qvUtil::Progress copying;
    if (progress != nullptr)
        progress->subPhase(shareOfPacking, packing);
    if (Error const error = source.pack(&packing))
        return error;
    if (progress != nullptr)
        progress->subPhase(1 - shareOfPacking, copying);
    return copySourceIntoPackage(source, name, &copying);
}

Error ioPackageFile::addEntry(ioPackageFileSource const & source, IString const & wantedName,
                              qvUtil::Progress * progress) {
    IString const name = cleanupName(wantedName);
    if (Error const error = verifyAddEntry(name))
        return error;
    if (source.impl_ == nullptr)
        return ioPackageCopy::couldNotRead(source.getFile());
    if (source.impl_->isFile(identity()))
        return isThePackage();
    return copySourceIntoPackage(*source.impl_, name, progress);
}

Error ioPackageFile::copySourceIntoPackage(ioPackageFileSource::Impl & source, IString const & name,
                                           qvUtil::Progress * progress) {
    Source const stored{name, source.size(), source.timestamp(), source.isCompressed(), progress};
    if (auto const bytes = source.bytes())
        return putIntoPackage(stored, [&] {
            output_.writeData(bytes->data(), static_cast<int>(bytes->size()));
            return Error();
        });
    ioClosing<ioBufferedStreamInput> stream;
    if (Error const error = source.open(stream))
        return error;
    return copyStreamIntoPackage(stream, stored);
}

Error ioPackageFile::copyStreamIntoPackage(ioBufferedStreamInput & stream, Source const & source) {
    return putIntoPackage(source, [&] {
        ioPackageCopy::Block const block(source.size);
        ioPackageCopy::Report const report(source.progress, source.size);
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
            report(copied);
            hasMore = wanted < count;
        }
        if (!ioPackageCopy::isSound(stream))
            return Error(9, L"Error reading file for entry: %S", source.name.asWChar());
        if (hasMore || stream.good() || copied != source.size)
            return Error(16, L"While writing file for entry it changed size: %S", source.name.asWChar());
        return Error();
    });
}

Error ioPackageFile::addEntry(ioPackageFileEntry const * entry, IString const & wantedName,
                              qvUtil::Progress * progress) {
    IString const name = cleanupName(wantedName);
    if (Error const error = verifyAddEntry(name))
        return error;
    if (entry == nullptr)
        return Error(7, "The given package file entry is NULL.");
    if (entry->getPackage() == this)
        return isThePackage();
    return copyEntryIntoPackage(entry, name, progress);
}

Error ioPackageFile::copyEntryIntoPackage(ioPackageFileEntry const * entry, IString const & name,
                                          qvUtil::Progress * progress) {
    if (name.isEmpty())
        return Error(11, "The name can not be empty.");
    if (directory_.contains(name))
        return Error(14, L"The entry is already present in the package: %S", name.asWChar());
    ioClosing<ioBufferedStreamInput> stream;
    stream.openPackageFileEntry(entry);
    if (!ioPackageCopy::isSound(stream))
        return ioPackageCopy::couldNotReadEntry(name);
    return copyStreamIntoPackage(stream, Source{name, entry->size_, entry->timestamp_, entry->compressed_, progress});
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

// ---- A compact copy

Error ioPackageFile::write(IString const & name, qvUtil::Progress * progress) {
    if (packageName_.isEmpty())
        return Error(3, "The package file has not been opened yet.");
    // The entries are read by the package's name, whatever file that leads to by now.
    qvPlatform::FileFacts facts;
    qvPlatform::FileFacts own;
    if (qvPlatform::queryFile(name, qvPlatform::Links::follow, facts).good()) {
        bool const isOwn = facts.identity == identity() ||
                           (qvPlatform::queryFile(packageName_, qvPlatform::Links::follow, own).good() &&
                            facts.identity == own.identity);
        if (isOwn || !qvPlatform::removeFile(name).good())
            return Error(4, "The pacakge is not writable.");
    }
    ioPackageFile copy;
    if (Error const error = copy.open(name))
        return error;
    if (!copy.writable_)
        return Error(4, "The package file is not writable.");
    closePackageForOutput();
    if (Error const error = copyAllInto(copy, progress))
        return error;
    if (Error const error = copy.update())
        return error;
    takeOver(copy);
    if (progress != nullptr)
        progress->set(1);
    return Error();
}

Error ioPackageFile::copyAllInto(ioPackageFile & copy, qvUtil::Progress * progress) const {
    std::int64_t whole = 0;
    for (auto const & [name, index] : directory_)
        whole += entries_[index].size_;
    whole = std::max<std::int64_t>(whole, 1);
    for (auto const & [name, index] : directory_) {
        ioPackageFileEntry const & entry = entries_[index];
        qvUtil::Progress copying;
        if (progress != nullptr)
            progress->subPhase(static_cast<double>(entry.size_) / static_cast<double>(whole), copying);
        if (Error const error = copy.copyEntryIntoPackage(&entry, name, &copying))
            return error;
    }
    return Error();
}

// What another object knows of its package becomes what this one knows.
void ioPackageFile::takeOver(ioPackageFile & other) {
    close();
    other.close();
    packageName_.swap(other.packageName_);
    std::swap(fileDevice_, other.fileDevice_);
    std::swap(fileNumber_, other.fileNumber_);
    std::swap(writable_, other.writable_);
    std::swap(dirty_, other.dirty_);
    std::swap(pointerOffset_, other.pointerOffset_);
    std::swap(dataOffset_, other.dataOffset_);
    std::swap(freeCount_, other.freeCount_);
    directory_.swap(other.directory_);
    entries_.swap(other.entries_);
    places_.swap(other.places_);
    for (ioPackageFileEntry & entry : entries_)
        entry.package_ = this;
}
