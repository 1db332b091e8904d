// The handle that programs use on files.

#ifndef qvOSFile_h
#define qvOSFile_h

#include "Base/OS/qvOSFileTransport.h"
#include "Base/OS/qvOSFilename.h"

#include <memory>

namespace qvOS {

/// A file or a directory by its name, in whatever storage the name leads to. The name reaches the storage unchanged;
/// pass Filename::name() to have it in normal form. It is closed until open() and again after close(); the destructor
/// closes it. A File belongs to one thread at a time.
///
/// Failures have the numbers and texts of getError(). What needs the file to be closed gives 9 while it is open.
/// Reading and writing go straight to the storage: read and write in blocks. Calls on a File that is not valid are a
/// fault of the caller.
///
///     qvOS::File file(L"notes.txt");
///     if (qvUtil::Error const error = file.open(qvOS::OpenRead))
///         return error; // 18, "File does not exist"
///     char block[4096];
///     unsigned count = 0;
///     qvUtil::Error const end = file.read(block, sizeof block, &count); // 3 at the end, with the last bytes
class QV_EXPORT File : public IOStream {
public:
    /// Texts by their codes, 0 to 19.
    static char const * const ErrMsgs[20];
    /// The failure of a code. One that is not in the table has no text.
    static qvUtil::Error getError(int code);

    explicit File(qvString::IString const & name);
    /// Takes the transport over.
    explicit File(FileTransport * transport);
    File(File const &) = delete;
    File & operator=(File const &) = delete;
    ~File() override;

    /// Success, 3 at the end of the data together with its last bytes, or 4.
    qvUtil::Error read(void * buffer, unsigned int size, unsigned int * count) override;
    qvUtil::Error write(void const * buffer, unsigned int size, unsigned int * count) override;

    /// Whether there is a transport.
    bool isValid() const { return transport_ != nullptr; }

    /// `mode` is a set of OpenMode bits. 9 when it is open; 18 when there is no such file; 4 otherwise.
    qvUtil::Error open(int mode);
    /// Opens a new file whose name is made from this one, in the temporary directory unless the name has a directory;
    /// getFullName() tells where it is.
    qvUtil::Error openTemp(int mode);
    /// 8 when it is not open.
    qvUtil::Error close();
    /// The names in a directory (10 for anything else), "." and ".." among them.
    qvUtil::Error readDir(qv::vector<qvString::IString> & list, bool fullPaths);
    qvUtil::Error copyTo(File & target);
    /// 13 when a directory was copied and is not empty, see FileTransport.
    qvUtil::Error moveTo(File & target);
    /// Deletes the file, or a whole directory; with DeleteShallow only an empty one. Of a link, the link.
    qvUtil::Error deleteSelf(int flags);
    /// 2 when there is something of that name.
    qvUtil::Error makeDirectory();
    qvUtil::Error makeTempDirectory();
    /// With all missing directories above it. 2 for a missing one by a name that ends in a separator, which is made.
    qvUtil::Error makeDirectoryAll();

    bool isDirectory() const;
    bool isOpen() const;
    qvString::IString getFullName() const;
    qvString::IString getNameTitle() const;
    qvString::IString getNameBase() const;
    wchar_t getSeparator() const;
    qvString::IString transportId() const;
    FileTransport * getTransport() { return transport_.get(); }
    FileTransport const * getTransport() const { return transport_.get(); }

    /// What is known of the file. That it is missing is no failure: `status` tells it.
    qvUtil::Error query(FileStatus & status, bool ownerGroup = false);
    /// 1 when the name leads to no storage.
    static qvUtil::Error query(qvString::IString const & name, FileStatus & status);
    static qvUtil::Error query(Filename const & name, FileStatus & status);

private:
    std::unique_ptr<FileTransport> transport_;
};

} // namespace qvOS

#endif
