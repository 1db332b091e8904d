// The process's file factory.

#ifndef FileFactoryImpl_h
#define FileFactoryImpl_h

#include "Base/OS/Internal/LocalFileTransport.h"
#include "Base/OS/qvOSFileFactory.h"
#include "Base/Utility/qvUtilInitializer.h"

#include <memory>

namespace qvOS {

class FileFactoryImpl : public FileFactory {
public:
    FileFactoryImpl();

    File * createFile(qvString::IString const & name) override;
    FileTransport * createTransport(qvString::IString const & name) override;
    void registerTransportFactory(FileTransportFactory * factory) override;

private:
    qv::vector<FileTransportFactory *> transportFactories_; // in the order of registration, not owned
    std::unique_ptr<LocalFileTransportFactory> localFactory_;
};

// Makes the factory when the program starts, before it has threads.
class FileFactoryInitializer : public qvUtil::Initializer {
public:
    qvUtil::Error initialize() override;
};

} // namespace qvOS

#endif
