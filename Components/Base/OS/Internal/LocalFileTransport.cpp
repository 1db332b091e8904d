#include "Base/OS/Internal/LocalFileTransport.h"

#include "Base/OS/Internal/FileCodes.h"
#include "Base/OS/qvOSFile.h"
#include "Base/OS/qvOSFilename.h"
#include "Base/OS/qvOSTemporaryFiles.h"
#include "Base/Utility/Internal/SystemErrorText.h"

#include <cstdlib>
#include <optional>

namespace qvOS {

using qvPlatform::FileFacts;
using qvPlatform::FileIdentity;
using qvPlatform::FileKind;
using qvPlatform::FileOutcome;
using qvPlatform::FileResult;
using qvPlatform::Links;
using qvString::IString;
using qvUtil::Error;

namespace {

// What opening and creating tell apart.
Error errorOfOpening(FileResult result) {
    switch (result.outcome) {
    case FileOutcome::good:
        return Error();
    case FileOutcome::notFound:
        return File::getError(code::noSuchFile);
    case FileOutcome::exists:
        return File::getError(code::fileExists);
    default:
        return File::getError(code::ioProblem);
    }
}

Error errorOfMaking(FileResult result) {
    if (result.good())
        return Error();
    return File::getError(result.outcome == FileOutcome::exists ? code::fileExists : code::ioProblem);
}

// Nothing when the bits name no way to open a file.
std::optional<qvPlatform::OpenMode> systemMode(int mode) {
    if ((mode & OpenAppend) != 0)
        return qvPlatform::OpenMode::append;
    bool const reads = (mode & OpenRead) != 0;
    bool const writes = (mode & OpenWrite) != 0;
    if (reads && writes)
        return qvPlatform::OpenMode::update;
    if (reads)
        return qvPlatform::OpenMode::read;
    if (writes)
        return qvPlatform::OpenMode::write;
    return std::nullopt;
}

IString randomLetters(int count) {
    IString letters;
    for (int i = 0; i < count; ++i)
        letters.append(static_cast<wchar_t>(L'a' + std::rand() % 25));
    return letters;
}

IString copyOf(IString const & text) {
    IString copy;
    copy.assign(text);
    return copy;
}

IString temporaryBase(IString const & name) {
    IString directory = copyOf(Filename(name).dirname());
    if (directory.isEmpty())
        directory.assign(getTempDirectory().name());
    return directory;
}

} // namespace

IString asDirectory(IString const & name, wchar_t separator) {
    IString directory = copyOf(name);
    if (!directory.isEmpty() && directory[directory.length() - 1] != separator)
        directory.append(separator);
    return directory;
}

LocalFileTransport::LocalFileTransport(IString const & name) { name_.assign(name); }

LocalFileTransport::~LocalFileTransport() = default;

// ---- Bytes

Error LocalFileTransport::read(void * buffer, unsigned int size, unsigned int * count) {
    if (count != nullptr)
        *count = 0;
    if (!stream_.isOpen())
        return File::getError(code::ioProblem);
    qvPlatform::TransferResult const got = stream_.read(static_cast<char *>(buffer), size);
    if (count != nullptr)
        *count = static_cast<unsigned int>(got.count);
    if (!got.result.good())
        return File::getError(code::ioProblem);
    return stream_.isAtEnd() ? File::getError(code::endOfFile) : Error();
}

Error LocalFileTransport::write(void const * buffer, unsigned int size, unsigned int * count) {
    if (count != nullptr)
        *count = 0;
    if (!stream_.isOpen())
        return File::getError(code::ioProblem);
    qvPlatform::TransferResult const put = stream_.write(static_cast<char const *>(buffer), size);
    if (count != nullptr)
        *count = static_cast<unsigned int>(put.count);
    return put.count == size ? Error() : File::getError(code::ioProblem);
}

Error LocalFileTransport::copyContentsTo(LocalFileTransport & target) {
    FileResult const copied = qvPlatform::copyDescriptor(stream_.descriptor(), target.stream_.descriptor());
    return copied.good() ? Error() : File::getError(code::ioProblem);
}

// ---- Opening

Error LocalFileTransport::open(int mode) {
    std::optional<qvPlatform::OpenMode> const wanted = systemMode(mode);
    stream_.close();
    if (!wanted.has_value())
        return File::getError(code::ioProblem);
    return errorOfOpening(stream_.open(name_, *wanted));
}

Error LocalFileTransport::openTemp(int mode) {
    constexpr int attempts = 10;
    constexpr int numRandomLetters = 5;
    std::optional<qvPlatform::OpenMode> const wanted = systemMode(mode);
    stream_.close();
    if (!wanted.has_value())
        return File::getError(code::ioProblem);
    IString const directory = temporaryBase(name_);
    IString base = copyOf(name_);
    FileResult result;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        Filename const named(base);
        IString prefix = copyOf(named.basename());
        prefix.append(named.baseSuffix());
        if (prefix.isEmpty() || prefix == L".")
            prefix = L"OVT";
        IString unique;
        result = qvPlatform::makeUniqueFile(directory, prefix, qvPlatform::Access::ownerOnly, unique);
        if (result.good()) {
            result = stream_.open(unique, *wanted);
            if (result.good()) {
                name_.swap(unique);
                return Error();
            }
            qvPlatform::removeFile(unique);
        }
        if (result.outcome != FileOutcome::exists)
            break;
        base = randomLetters(numRandomLetters);
    }
    return errorOfOpening(result);
}

Error LocalFileTransport::close() {
    stream_.close();
    return Error();
}

// ---- Directories

Error LocalFileTransport::makeDirectory() { return errorOfMaking(qvPlatform::makeDirectory(name_)); }

Error LocalFileTransport::makeTempDirectory() {
    constexpr int attempts = 3;
    constexpr int numRandomLetters = 10;
    IString const base = temporaryBase(name_);
    FileResult result;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        IString candidate = copyOf(base);
        candidate.append(Filename::separator());
        candidate.append(randomLetters(numRandomLetters));
        result = qvPlatform::makeDirectory(candidate);
        name_.swap(candidate);
        if (result.good())
            return Error();
    }
    return errorOfMaking(result);
}

// From the top down, without a recursion as deep as the name is long.
Error LocalFileTransport::makeDirectoryAll() {
    if (isDirectory())
        return Error();
    bool const isTooLong = name_.length() >= static_cast<unsigned>(Filename::maxLength());
    qv::vector<IString> missing;
    for (IString name = copyOf(name_); !isTooLong;) {
        unsigned const last = name.rfind(Filename::separator());
        if (last == IString::npos || last == 0)
            break;
        name.erase(last);
        if (LocalFileTransport(name).isDirectory())
            break;
        missing.append(copyOf(name));
    }
    while (!missing.empty()) {
        if (Error const error = LocalFileTransport(missing.back()).makeDirectory())
            return error;
        missing.pop_back();
    }
    return makeDirectory();
}

Error LocalFileTransport::readDir(qv::vector<IString> & list, bool fullPaths) {
    return listEntries(Links::follow, list, fullPaths);
}

Error LocalFileTransport::readOwnDir(qv::vector<IString> & list, bool fullPaths) {
    return listEntries(Links::keep, list, fullPaths);
}

Error LocalFileTransport::listEntries(Links links, qv::vector<IString> & list, bool fullPaths) const {
    list.clear();
    IString const directory = asDirectory(name_, Filename::separator());
    if (directory.length() > static_cast<unsigned>(Filename::maxLength()))
        return File::getError(code::pathTooLong);
    FileResult const result = qvPlatform::listDirectory(links == Links::keep ? entryName() : directory, links, list);
    if (result.outcome == FileOutcome::notFound)
        return Error();
    if (!result.good())
        return File::getError(code::ioProblem);
    if (fullPaths)
        for (IString & name : list)
            name.prepend(directory);
    return Error();
}

// ---- Moving and deleting

Error LocalFileTransport::moveTo(FileTransport & target) {
    FileStatus own;
    FileStatus others;
    if (Error const error = query(own))
        return error;
    static_cast<void>(target.query(others));
    if (!own.exists() && !isSymbolicLink())
        return File::getError(code::noSuchFile);
    if (transportId() == target.transportId() && (isDirectory() == target.isDirectory() || !others.exists()) &&
        qvPlatform::renameFile(entryName(), target.getFullName()).good())
        return Error();
    return FileTransport::moveTo(target);
}

Error LocalFileTransport::deleteSelf() {
    FileResult removed;
    bool const hasSeparator = name_.length() > 0 && name_[name_.length() - 1] == Filename::separator();
    if ((isDirectory() || hasSeparator) && isSymbolicLink())
        removed = qvPlatform::removeFile(entryName());
    else if (!isDirectory())
        removed = qvPlatform::removeFile(name_);
    else
        removed = qvPlatform::removeDirectory(name_);
    if (removed.good())
        return Error();
    return File::getError(removed.outcome == FileOutcome::notEmpty ? code::notEmpty : code::ioProblem);
}

// ---- What it is

bool LocalFileTransport::isDirectory() {
    if (!directoryKnown_) {
        IString name = copyOf(name_);
        unsigned const length = name.length();
        bool const isDriveRoot = length == 3 && name[1] == L':' && name[2] == Filename::separator();
        if (length > 1 && name[length - 1] == Filename::separator() && !isDriveRoot)
            name.erase(length - 1);
        FileFacts facts;
        if (qvPlatform::queryFile(name, Links::follow, facts).good()) {
            directoryKnown_ = true;
            directoryValue_ = facts.kind == FileKind::directory;
        }
    }
    return directoryKnown_ && directoryValue_;
}

IString LocalFileTransport::entryName() const {
    unsigned length = name_.length();
    while (length > 1 && name_[length - 1] == Filename::separator())
        --length;
    IString name = copyOf(name_);
    name.erase(length);
    return name;
}

bool LocalFileTransport::isSymbolicLink() const {
    FileFacts facts;
    return qvPlatform::queryFile(entryName(), Links::keep, facts).good() && facts.kind == FileKind::symbolicLink;
}

bool LocalFileTransport::isThere(bool & isRealDirectory) const {
    FileFacts facts;
    bool isKnown = qvPlatform::queryFile(name_, Links::keep, facts).good();
    isRealDirectory = isKnown && facts.kind == FileKind::directory;
    if (isKnown && facts.kind == FileKind::symbolicLink)
        isKnown = qvPlatform::queryFile(name_, Links::follow, facts).good();
    return isKnown && (facts.kind == FileKind::directory || facts.kind == FileKind::file);
}

Error LocalFileTransport::refuseCopyTo(LocalFileTransport const * target) const {
    FileFacts own;
    FileFacts others;
    if (!qvPlatform::queryFile(name_, Links::follow, own).good())
        return Error(); // opening it tells what is wrong
    if (own.kind == FileKind::other)
        return File::getError(code::ioProblem);
    if (target == nullptr)
        return Error();
    if (qvPlatform::queryFile(target->name_, Links::follow, others).good() && own.identity == others.identity)
        return File::getError(code::noOverwrite);
    if (own.kind == FileKind::directory && leadsBack(own.identity))
        return File::getError(code::noOverwrite);
    return Error();
}

IString LocalFileTransport::getFullName() { return copyOf(name_); }

IString LocalFileTransport::getNameTitle() {
    unsigned const last = name_.rfind(Filename::separator());
    return last == IString::npos ? IString() : IString(name_.asWChar(), static_cast<int>(last + 1));
}

IString LocalFileTransport::getNameBase() {
    unsigned const last = name_.rfind(Filename::separator());
    if (last == IString::npos)
        return IString();
    return IString(name_.asWChar() + last + 1, static_cast<int>(name_.length() - last - 1));
}

wchar_t LocalFileTransport::getSeparator() { return Filename::separator(); }

IString LocalFileTransport::transportId() { return IString(L"LocalFileTransport"); }

Error LocalFileTransport::query(FileStatus & status) {
    FileFacts facts;
    FileResult const result = qvPlatform::queryFile(name_, Links::follow, facts);
    if (result.outcome == FileOutcome::notFound)
        return Error();
    if (!result.good())
        return Error(code::ioProblem, qvUtil::systemErrorText(static_cast<unsigned>(result.systemNumber)));
    bool const isDirectory = facts.kind == FileKind::directory;
    bool const isFile = facts.kind == FileKind::file;
    bool const exists = isDirectory || isFile;
    status.setIsDirectory(isDirectory);
    status.setIsFile(isFile);
    status.setExists(exists);
    status.setSize(static_cast<long>(facts.size));
    status.setLastModification(facts.modificationTime);
    status.setCreationDate(facts.creationTime);
    status.setIsRemote(false);
    if (exists) {
        status.setIsReadable(qvPlatform::mayRead(name_));
        status.setIsWritable(qvPlatform::mayWrite(name_));
    }
    return Error();
}

Error LocalFileTransport::queryOwnerGroup(FileStatus & status) {
    status.setOwner("Unknown");
    status.setGroup("Unknown");
    IString owner;
    IString group;
    FileResult const result = qvPlatform::queryOwner(name_, owner, group);
    if (!result.good()) {
        // The name in UTF-8, which the text's own narrow forms need not be.
        IString text(L"Failed to query Owner/Group of ");
        text.append(name_);
        return Error(-1, text);
    }
    if (!owner.isEmpty())
        status.setOwner(qvString::CString(owner.asUTF8()));
    if (!group.isEmpty())
        status.setGroup(qvString::CString(group.asUTF8()));
    return Error();
}

bool LocalFileTransport::leadsBack(FileIdentity const & directory) const {
    if (!isSymbolicLink())
        return false;
    for (IString name = entryName();;) {
        unsigned const last = name.rfind(Filename::separator());
        if (last == IString::npos || last == 0)
            return false;
        name.erase(last);
        FileFacts above;
        if (qvPlatform::queryFile(name, Links::follow, above).good() && above.identity == directory)
            return true;
    }
}

bool LocalFileTransport::holds(LocalFileTransport const & other) const {
    IString own;
    IString others;
    if (!qvPlatform::resolvedName(name_, own).good() || !qvPlatform::resolvedName(other.name_, others).good())
        return false;
    IString const start = asDirectory(own, Filename::separator());
    return others == own || others.find(start) == 0;
}

// ---- The factory

FileTransport * LocalFileTransportFactory::create(IString const & name) {
    constexpr unsigned lengthOfScheme = 5;
    if (name.find(L"file:") != 0)
        return new LocalFileTransport(name);
    unsigned start = lengthOfScheme;
    while (start < name.length() && name[start] == L'/')
        ++start;
    return new LocalFileTransport(IString(name.asWChar() + start, static_cast<int>(name.length() - start)));
}

bool LocalFileTransportFactory::s_forceTransportLoad() { return true; }

} // namespace qvOS
