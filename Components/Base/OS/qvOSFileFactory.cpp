#include "Base/OS/qvOSFileFactory.h"

#include "Base/OS/Internal/FileFactoryImpl.h"
#include "Base/OS/qvOSFile.h"

namespace qvOS {

using qvString::IString;

FileFactory::~FileFactory() = default;

FileFactory * FileFactory::getFileFactory() {
    static FileFactoryImpl factory;
    return &factory;
}

FileFactoryImpl::FileFactoryImpl() : localFactory_(std::make_unique<LocalFileTransportFactory>()) {
    static_cast<void>(LocalFileTransportFactory::s_forceTransportLoad());
}

File * FileFactoryImpl::createFile(IString const & name) {
    std::unique_ptr<FileTransport> transport(createTransport(name));
    if (transport == nullptr)
        return nullptr;
    std::unique_ptr<File> file = std::make_unique<File>(transport.get());
    static_cast<void>(transport.release());
    return file.release();
}

FileTransport * FileFactoryImpl::createTransport(IString const & name) {
    for (FileTransportFactory * const factory : transportFactories_) {
        if (FileTransport * const transport = factory->create(name))
            return transport;
    }
    return localFactory_->create(name);
}

void FileFactoryImpl::registerTransportFactory(FileTransportFactory * factory) { transportFactories_.append(factory); }

qvUtil::Error FileFactoryInitializer::initialize() {
    static_cast<void>(FileFactory::getFileFactory());
    return qvUtil::Error();
}

} // namespace qvOS
