#include "Base/OS/qvOSFilesystem.h"

#include "Base/OS/qvOSFilename.h"
#include "Base/Platform/PlatformFileSystem.h"
#include "Base/Utility/Internal/SystemErrorText.h"

namespace qvOS {

using qvString::IString;
using qvUtil::Error;

Error Filesystem::stat() {
    IString root;
    if (!qvPlatform::absoluteName(filename_, root).good())
        return Error(1, "Filesystem::stat(): invalid path %ls\n", filename_.asWChar());
    // The file's own name is dropped.
    root.erase(root.rfind(qvPlatform::nameSeparator()) + 1);
    qvPlatform::FileSystemFacts facts;
    qvPlatform::FileResult const result = qvPlatform::queryFileSystem(root, facts);
    if (result.good()) {
        constexpr unsigned bytesPerBlock = 1024;
        blockSize_ = bytesPerBlock;
        size_ = static_cast<unsigned int>(facts.size / bytesPerBlock);
        avail_ = static_cast<unsigned int>(facts.avail / bytesPerBlock);
    }
    // A network name begins so only where the separator is a backslash.
    IString const prefix = Filename(filename_).prefix();
    isRemote_ = prefix.find(L"\\\\") == 0 || facts.isRemote;
    if (result.good())
        return Error();
    return Error(1, "Filesystem::stat(): GetDiskFreeSpaceEx(%ls) failed: %ls", root.asWChar(),
                 qvUtil::systemErrorText(static_cast<unsigned>(result.systemNumber)).asWChar());
}

} // namespace qvOS
