// How a name finds its storage.

#ifndef qvOSFileFactory_h
#define qvOSFileFactory_h

#include "Base/OS/qvOSFileTransport.h"

namespace qvOS {

class File;

/// Turns a name into a transport: asks the registered factories in their order, and the local disk at last, which takes
/// every name. `file:` in front of a local name is left out together with all slashes behind it, so `file:///tmp/a` is
/// the relative name `tmp/a`; any other text is a local name as it stands.
///
/// Factories are to be registered before threads use this: nothing is locked.
class QV_EXPORT FileFactory {
public:
    FileFactory() = default;
    FileFactory(FileFactory const &) = delete;
    FileFactory & operator=(FileFactory const &) = delete;
    virtual ~FileFactory();

    /// A new File on the transport, the caller's to delete; null when there is no transport.
    virtual File * createFile(qvString::IString const & name) = 0;
    /// A new transport, the caller's to delete.
    virtual FileTransport * createTransport(qvString::IString const & name) = 0;
    /// The factory stays its owner's, and must live as long as names are looked up.
    virtual void registerTransportFactory(FileTransportFactory * factory) = 0;

    /// The one of the process, made on first use.
    static FileFactory * getFileFactory();
};

} // namespace qvOS

#endif
