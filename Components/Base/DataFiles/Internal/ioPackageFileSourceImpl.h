// What a package stores of a file.

#ifndef ioPackageFileSourceImpl_h
#define ioPackageFileSourceImpl_h

#include "Base/DataFiles/ioPackageFileSource.h"
#include "Base/OS/qvOSIOStream.h"
#include "Base/Platform/PlatformFileSystem.h"

#include <memory>
#include <optional>
#include <string_view>

class ioBufferedStreamInput;
class ioBufferedStreamOutput;

class ioPackageFileSource::Impl {
public:
    explicit Impl(qvString::IString const & file) { file_.assign(file); }

    // Failures: 6.
    qvUtil::Error look();
    // Failures: 7 to 10.
    qvUtil::Error pack(qvUtil::Progress * progress);
    // Reads a small file that is stored as it is. When that fails, the file will be met again on its way in.
    void load();
    // The bytes to be stored, where they lie in memory. Else they are to be opened.
    std::optional<std::string_view> bytes() const { return ready_ ? ready_->bytes() : std::nullopt; }
    // Failures: 7.
    qvUtil::Error open(ioBufferedStreamInput & stream);

    qvString::IString const & file() const { return file_; }
    bool isFile(qvPlatform::FileIdentity const & other) const { return facts_.identity == other; }
    std::int64_t size() const { return isPacked_ ? ready_->size() : facts_.size; }
    std::int64_t timestamp() const { return facts_.modificationTime; }
    bool isCompressed() const { return isPacked_; }

private:
    // Bytes that are ready: of a small file in memory, of a large one in a temporary file, which is deleted in the end.
    class Ready : public qvOS::IOStream {
    public:
        explicit Ready(std::int64_t fileSize) : isInMemory_(fileSize <= mostInMemory) {}
        Ready(Ready const &) = delete;
        Ready & operator=(Ready const &) = delete;
        ~Ready() override;

        void open(ioBufferedStreamOutput & stream);
        // Of a file; what is in memory is there.
        void open(ioBufferedStreamInput & stream) const;
        std::optional<std::string_view> bytes() const {
            return isInMemory_ ? std::optional(std::string_view(bytes_.get(), numBytes_)) : std::nullopt;
        }
        // Reads a file of that size. False when it is another one.
        bool load(qvString::IString const & file, std::int64_t size);
        // Measures what was written. False when that fails.
        bool finish();
        std::int64_t size() const { return size_; }

        static constexpr std::int64_t mostInMemory = 1 << 20;

        // Nothing: what is written is taken from bytes().
        qvUtil::Error read(void * buffer, unsigned int size, unsigned int * count) override;
        qvUtil::Error write(void const * buffer, unsigned int size, unsigned int * count) override;

    private:
        void makeRoom(std::size_t count);

        bool isInMemory_;
        std::unique_ptr<char[]> bytes_;
        std::size_t numBytes_ = 0;
        std::size_t room_ = 0;
        std::int64_t size_ = 0;
        qvString::IString name_; // of the temporary file; empty when there is none to delete
    };

    qvUtil::Error compress(qvUtil::Progress * progress);

    qvString::IString file_;
    qvPlatform::FileFacts facts_;
    std::optional<Ready> ready_; // none: the file's own bytes
    bool isPacked_ = false;
};

#endif
