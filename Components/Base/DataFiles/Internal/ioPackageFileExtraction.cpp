// What comes out of a package.

#include "Base/DataFiles/Internal/ioClosing.h"
#include "Base/DataFiles/Internal/ioPackageCopy.h"
#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/DataFiles/ioPackageFile.h"
#include "Base/OS/qvOSFile.h"
#include "Base/OS/qvOSFilename.h"
#include "Base/Platform/PlatformFileSystem.h"
#include "Base/Platform/PlatformScopedDescriptor.h"

#include <algorithm>

using qvOS::Filename;
using qvPlatform::FileFacts;
using qvPlatform::FileKind;
using qvPlatform::Links;
using qvString::IString;
using qvUtil::Error;

namespace {

// What unpacks is several times as much: for a stored size up to this, blocks have four times as many bytes.
constexpr std::int64_t mostStoredForBlock = 16384;

bool isSeparator(wchar_t c) { return c == L'/' || c == L'\\'; }

// What extracting writes to: a new file beside the target, which takes its place at the end. A target that is a device
// or the like is written itself.
class Target {
public:
    explicit Target(IString const & name) : name_(name) {}
    Target(Target const &) = delete;
    Target & operator=(Target const &) = delete;
    ~Target() {
        if (beside_.isEmpty())
            return;
        static_cast<void>(file_.close());
        qvPlatform::removeFile(beside_);
    }

    // Never the package itself, nor a directory.
    bool open(IString const & package) {
        FileFacts facts;
        FileFacts followed;
        FileFacts forbidden;
        bool const isThere = qvPlatform::queryFile(name_, Links::keep, facts).good();
        if (isThere && facts.kind == FileKind::directory)
            return false;
        if (isThere && qvPlatform::queryFile(name_, Links::follow, followed).good() &&
            qvPlatform::queryFile(package, Links::follow, forbidden).good() && followed.identity == forbidden.identity)
            return false;
        if (isThere && facts.kind == FileKind::other)
            return qvPlatform::openForWriting(name_, qvPlatform::Truncation::truncate, *file_).good();
        IString unique;
        if (!qvPlatform::makeUniqueFile(Filename(name_).dirname(), L"ext", qvPlatform::Access::byMask, unique, *file_)
                 .good())
            return false;
        beside_.swap(unique);
        return true;
    }
    bool write(char const * bytes, int count) {
        qvPlatform::ConstantPiece const piece{bytes, static_cast<std::size_t>(count)};
        return qvPlatform::writeAll(*file_, {&piece, 1}).result.good();
    }
    bool finish() {
        if (!file_.close().good())
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
    qvPlatform::ScopedDescriptor file_;
};

// A directory in a form to which names can be joined. One on whose way ".." stands, or that looks like a drive, would
// become another one by joining.
IString rootOf(IString const & directory) {
    bool const isDrive = directory.length() > 1 && directory[1] == L':';
    bool const goesUp = directory.find(L"..") != IString::npos;
    IString resolved;
    if ((isDrive || goesUp) &&
        (qvPlatform::resolvedName(directory, resolved).good() || qvPlatform::absoluteName(directory, resolved).good()))
        return resolved;
    return Filename(directory).name();
}

// Whether the way to a file, which is the directory and behind it `tail` characters, leaves the directory through a
// symbolic link.
bool leadsOut(IString const & directory, IString const & file, unsigned tail) {
    for (IString way = Filename(file).dirname(); way.length() + tail > file.length(); way = Filename(way).dirname()) {
        FileFacts facts;
        bool const isLink =
            qvPlatform::queryFile(way, Links::keep, facts).good() && facts.kind == FileKind::symbolicLink;
        if (!isLink)
            continue;
        IString root;
        IString resolved;
        if (!qvPlatform::resolvedName(directory.isEmpty() ? IString(L".") : directory, root).good() ||
            !qvPlatform::resolvedName(way, resolved).good())
            return true;
        if (root[root.length() - 1] != Filename::separator())
            root.append(Filename::separator());
        resolved.append(Filename::separator());
        if (resolved.find(root) != 0)
            return true;
    }
    return false;
}

} // namespace

// The bytes of the package from there on; none where they cannot be sought. A chain that has failed stays so; a new one
// goes on.
ioBufferedStreamInput & ioPackageFile::inputAt(std::int64_t offset) const {
    bool const isFlowing = input_.isOpen() && input_.good();
    if (isFlowing && inputOffset_ == offset)
        return input_;
    if (!isFlowing)
        input_.openFile(packageName_);
    if (input_.isOpen() && !input_.seek(offset))
        input_.close();
    inputOffset_ = offset;
    return input_;
}

Error ioPackageFile::extractEntry(ioPackageFileEntry const * entry, IString const & file, std::int64_t limit,
                                  qvUtil::Progress * progress) const {
    if (entry == nullptr)
        return Error();
    closePackageForOutput();
    // Entries of this package that are stored as they are follow one another in one stream.
    bool const unpacks = entry->getCompressed();
    bool const isKept = entry->getPackage() == this && !unpacks && entry->getSize() >= 0;
    ioClosing<ioBufferedStreamInput> slice;
    if (!isKept)
        slice.openPackageFileEntry(entry);
    bool const isReadable = ioPackageCopy::isSound(isKept ? inputAt(entry->getOffset()) : slice);
    Target target(file);
    bool isOpen = isReadable && target.open(entry->getPackageName());
    // Mostly the directory is there: it is asked about only where something went wrong.
    if (IString const directory = Filename(file).dirname(); !isOpen && !directory.isEmpty()) {
        if (Error const error = qvOS::File(directory).makeDirectoryAll())
            return Error(5, IString(error.message()));
        isOpen = isReadable && target.open(entry->getPackageName());
    }
    if (!isReadable)
        return ioPackageCopy::couldNotReadEntry(entry->getName());
    if (!isOpen)
        return Error(2, L"Can not create file: %S", file.asWChar());
    if (unpacks) {
        slice.compress(true);
        slice.checksum(true);
    }
    auto const notWritten = [&] { return Error(10, L"Error writing file: %S", file.asWChar()); };
    std::int64_t written = 0;
    ioPackageCopy::Block const block(unpacks ? std::min(entry->getSize(), mostStoredForBlock) * 4 : entry->getSize());
    ioPackageCopy::Report const report(progress, unpacks ? entry->getSize() * 2 : entry->getSize());
    while (!isKept || written < entry->getSize()) {
        std::int64_t const left = isKept ? entry->getSize() - written : block.size();
        // Whoever hears the report may have extracted something else meanwhile.
        ioBufferedStreamInput & input = isKept ? inputAt(entry->getOffset() + written) : slice;
        int const count = input.readData(block.get(), static_cast<int>(std::min<std::int64_t>(left, block.size())));
        if (count <= 0)
            break;
        written += count;
        if (isKept)
            inputOffset_ += count;
        if ((limit >= 0 && written > limit) || !target.write(block.get(), count))
            return notWritten();
        report(written);
    }
    bool const isWhole = isKept || ioPackageCopy::isAtEnd(slice);
    if (!isWhole || (!unpacks && written != entry->getSize()))
        return Error(9, L"Error reading package file entry: %S", entry->getName().asWChar());
    if (!target.finish())
        return notWritten();
    report.end();
    return Error();
}

Error ioPackageFile::verifyExtractName(IString const & name) {
    bool const hasDrive = name.length() > 1 && name[1] == L':';
    if (name.isEmpty() || isSeparator(name[0]) || hasDrive || name.find(L'\0') != IString::npos)
        return ioPackageCopy::notAllowed(name);
    int depth = 0;
    unsigned start = 0;
    for (unsigned i = 0; i <= name.length(); ++i) {
        if (i < name.length() && !isSeparator(name[i]))
            continue;
        unsigned const length = i - start;
        bool const isHere = length == 1 && name[start] == L'.';
        bool const isUp = length == 2 && name[start] == L'.' && name[start + 1] == L'.';
        bool const isLast = i == name.length();
        depth += isUp ? -1 : length == 0 || isHere ? 0 : 1;
        if (depth < 0 || (isLast && (isHere || isUp)))
            return ioPackageCopy::notAllowed(name);
        start = i + 1;
    }
    return depth > 0 ? Error() : ioPackageCopy::notAllowed(name);
}

Error ioPackageFile::placeBelow(IString const & directory, IString const & name, IString & file) {
    if (Error const error = verifyExtractName(name))
        return error;
    IString const root = rootOf(directory);
    Filename const tail(name);
    // What folds to a drive is not joined but stands for itself.
    if (tail.name().length() > 1 && tail.name()[1] == L':')
        return ioPackageCopy::notAllowed(name);
    Filename const below{Filename(root), tail};
    bool const isTooLong = below.name().length() >= static_cast<unsigned>(Filename::maxLength());
    if (isTooLong || leadsOut(root, below.name(), tail.name().length()))
        return ioPackageCopy::notAllowed(name);
    file.assign(below.name());
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
