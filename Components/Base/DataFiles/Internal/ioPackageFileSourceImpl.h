// What a package stores of a file.

#ifndef ioPackageFileSourceImpl_h
#define ioPackageFileSourceImpl_h

#include "Base/DataFiles/ioPackageFileSource.h"
#include "Base/OS/qvOSIOStream.h"
#include "Base/Platform/PlatformFileSystem.h"

#include <optional>
#include <string>

class ioBufferedStreamInput;
class ioBufferedStreamOutput;

class ioPackageFileSource::Impl {
public:
    explicit Impl(qvString::IString const & file) { file_.assign(file); }

    // Failures: 6.
    qvUtil::Error look();
    // Failures: 7 to 10.
    qvUtil::Error pack(qvUtil::Progress * progress);
    // Opens the bytes to be stored. Failures: 7.
    qvUtil::Error open(ioBufferedStreamInput & stream);

    qvString::IString const & file() const { return file_; }
    bool isFile(qvPlatform::FileIdentity const & other) const { return facts_.identity == other; }
    std::int64_t size() const { return packed_ ? packedSize_ : facts_.size; }
    std::int64_t timestamp() const { return facts_.modificationTime; }
    bool isCompressed() const { return packed_.has_value(); }

private:
    // The packed form: of a small file in memory, of a large one in a temporary file, which is deleted in the end.
    class Packed : public qvOS::IOStream {
    public:
        explicit Packed(std::int64_t fileSize) : isInMemory_(fileSize <= mostInMemory) {}
        Packed(Packed const &) = delete;
        Packed & operator=(Packed const &) = delete;
        ~Packed() override;

        void open(ioBufferedStreamOutput & stream);
        void open(ioBufferedStreamInput & stream);
        // -1 when it is not known.
        std::int64_t size() const;

        qvUtil::Error read(void * buffer, unsigned int size, unsigned int * count) override;
        qvUtil::Error write(void const * buffer, unsigned int size, unsigned int * count) override;

    private:
        static constexpr std::int64_t mostInMemory = 1 << 20;

        bool isInMemory_;
        std::string bytes_;
        std::size_t at_ = 0;
        qvString::IString name_; // of the temporary file; empty when there is none to delete
    };

    qvUtil::Error compress(qvUtil::Progress * progress);

    qvString::IString file_;
    qvPlatform::FileFacts facts_;
    std::optional<Packed> packed_; // when it is smaller than the file
    std::int64_t packedSize_ = 0;
};

#endif
