#include "Base/OS/qvOSTemporaryFiles.h"

#include "Base/OS/qvOSFile.h"
#include "Base/OS/qvOSFileOperations.h"
#include "Base/Platform/PlatformFileSystem.h"
#include "Base/Strings/Internal/WideText.h"

#include <cstdint>
#include <ctime>

namespace qvOS {

using qvString::IString;
using qvString::WideView;

namespace {

Filename newName(Filename const & directory, IString const & prefix, IString const & suffix) {
    IString unique;
    if (qvPlatform::makeUniqueFile(directory.name(), prefix, qvPlatform::Access::ownerOnly, unique).good())
        qvPlatform::removeFile(unique);
    Filename const made(unique);
    IString name = made.dirname();
    name.append(Filename::separator());
    name.append(made.baseTrunk());
    IString process;
    process.format(L"%d", qvPlatform::processId());
    name.append(process);
    if (!suffix.isEmpty()) {
        name.append(L'.');
        name.append(suffix);
    }
    return Filename(name);
}

bool isDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

// Whether a name ends so, with one digit where the pattern has a '#'.
bool endsWith(WideView name, WideView pattern) {
    if (name.size() < pattern.size())
        return false;
    WideView const end = name.substr(name.size() - pattern.size());
    for (std::size_t i = 0; i < pattern.size(); ++i)
        if (pattern[i] == L'#' ? !isDigit(end[i]) : end[i] != pattern[i])
            return false;
    return true;
}

// Files that the programs of the family make and sometimes leave.
bool isScratchFile(WideView name) {
    struct Form {
        WideView start;
        WideView end;
        std::size_t least;
    };
    static constexpr Form forms[] = {
        {L"vor", L".unload", 13}, {L"vorenTempFile.", L"", 15}, {L"", L".vz$", 5},
        {L"mek", L"out#", 10},    {L"mek", L"cmd#.bat", 14},
    };
    for (Form const & form : forms)
        if (name.size() >= form.least && name.starts_with(form.start) && endsWith(name, form.end))
            return true;
    return false;
}

} // namespace

Filename getTempDirectory() { return Filename(qvPlatform::temporaryDirectory()); }

Filename createTmpFilename(IString suffix, wchar_t const * prefix) {
    return newName(getTempDirectory(), IString(prefix != nullptr ? prefix : L"OVTMP"), suffix);
}

Filename createNewFilenameVariant(Filename directory, wchar_t const * prefix, IString suffix) {
    return newName(directory, IString(prefix != nullptr ? prefix : L"recover"), suffix);
}

int cleanupTempDirectory(IString const & directory) {
    constexpr std::int64_t sevenDays = 604800;
    std::int64_t const cutOff = std::int64_t{std::time(nullptr)} - sevenDays;
    qv::vector<IString> paths;
    static_cast<void>(File(directory).readDir(paths, true));
    int removed = 0;
    for (IString const & path : paths) {
        WideView const name(path.asWChar(), path.length());
        if (!isScratchFile(name.substr(name.rfind(Filename::separator()) + 1)))
            continue;
        FileStatus status;
        bool const isOld = !File::query(path, status) && status.exists() && status.getLastModifiedDate() < cutOff;
        if (isOld && !fileDelete(Filename(path)))
            ++removed;
    }
    return removed;
}

int cleanupTempDirectory() {
    IString const own = getTempDirectory().name();
    IString const common(L"/tmp");
    int removed = cleanupTempDirectory(own);
    if (own != common && own != L"\\tmp" && File(common).isDirectory())
        removed += cleanupTempDirectory(common);
    return removed;
}

} // namespace qvOS

char * qvOS_CreateTemporaryFileName(char const * suffix) {
    qvString::IString const name = qvOS::createTmpFilename(qvString::IString(suffix), nullptr).name();
    return name.isEmpty() ? nullptr : name.copyAsMultibyte();
}

wchar_t * qvOS_CreateTemporaryFileNameW(wchar_t const * suffix) {
    qvString::IString const name = qvOS::createTmpFilename(qvString::IString(suffix), nullptr).name();
    return name.isEmpty() ? nullptr : name.copyAsWChar();
}

char * qvOS_GetTemporaryDirectory() { return qvOS::getTempDirectory().name().copyAsMultibyte(); }

wchar_t * qvOS_GetTemporaryDirectoryW() { return qvOS::getTempDirectory().name().copyAsWChar(); }
