#include "Base/DataFiles/ioPackageFileSource.h"

#include "Base/DataFiles/Internal/ioClosing.h"
#include "Base/DataFiles/Internal/ioPackageCopy.h"
#include "Base/DataFiles/Internal/ioPackageFileSourceImpl.h"
#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/DataFiles/ioBufferedStreamOutput.h"
#include "Base/OS/Internal/FileCodes.h"
#include "Base/OS/qvOSFile.h"
#include "Base/Platform/PlatformFile.h"
#include "Base/Platform/PlatformScopedDescriptor.h"

#include <algorithm>

using qvString::IString;
using qvUtil::Error;

// ---- Bytes that are ready

ioPackageFileSource::Impl::Ready::~Ready() {
    if (!name_.isEmpty())
        qvPlatform::removeFile(name_);
}

void ioPackageFileSource::Impl::Ready::open(ioBufferedStreamOutput & stream) {
    if (isInMemory_)
        return stream.openIOStream(this);
    IString unique;
    if (qvPlatform::makeUniqueFile(qvPlatform::temporaryDirectory(), L"OVT", qvPlatform::Access::ownerOnly, unique)
            .good())
        name_.swap(unique);
    stream.openFile(name_); // which fails without a name
}

void ioPackageFileSource::Impl::Ready::open(ioBufferedStreamInput & stream) const { stream.openFile(name_); }

bool ioPackageFileSource::Impl::Ready::finish() {
    qvPlatform::FileFacts facts;
    if (!isInMemory_ && !qvPlatform::queryFile(name_, qvPlatform::Links::follow, facts).good())
        return false;
    size_ = isInMemory_ ? static_cast<std::int64_t>(numBytes_) : facts.size;
    return true;
}

bool ioPackageFileSource::Impl::Ready::load(IString const & file, std::int64_t size) {
    qvPlatform::ScopedDescriptor opened;
    if (!qvPlatform::openForReading(file, *opened).good())
        return false;
    auto const wanted = static_cast<std::size_t>(size);
    // One byte more than there should be is enough to know that it has grown.
    makeRoom(wanted + 1);
    qvPlatform::TransferResult piece;
    do {
        qvPlatform::MutablePiece const rest{bytes_.get() + numBytes_, wanted + 1 - numBytes_};
        piece = qvPlatform::readSome(*opened, {&rest, 1});
        numBytes_ += piece.count;
    } while (piece.result.good() && piece.count > 0 && numBytes_ < wanted);
    return piece.result.good() && numBytes_ == wanted && finish();
}

void ioPackageFileSource::Impl::Ready::makeRoom(std::size_t count) {
    if (count <= room_)
        return;
    auto larger = std::make_unique_for_overwrite<char[]>(std::max(count, 2 * room_));
    std::copy_n(bytes_.get(), numBytes_, larger.get());
    room_ = std::max(count, 2 * room_);
    bytes_ = std::move(larger);
}

Error ioPackageFileSource::Impl::Ready::read(void *, unsigned int, unsigned int * count) {
    *count = 0;
    return qvOS::File::getError(qvOS::code::endOfFile);
}

Error ioPackageFileSource::Impl::Ready::write(void const * buffer, unsigned int size, unsigned int * count) {
    makeRoom(numBytes_ + size);
    std::copy_n(static_cast<char const *>(buffer), size, bytes_.get() + numBytes_);
    numBytes_ += size;
    *count = size;
    return Error();
}

// ---- The file

Error ioPackageFileSource::Impl::look() {
    bool const isAsked = qvPlatform::queryFile(file_, qvPlatform::Links::follow, facts_).good();
    bool const exists = facts_.kind == qvPlatform::FileKind::file || facts_.kind == qvPlatform::FileKind::directory;
    return isAsked && exists ? Error() : Error(6, L"File does not exist: %S\n", file_.asWChar());
}

Error ioPackageFileSource::Impl::pack(qvUtil::Progress * progress) {
    if (facts_.size == 0)
        return Error();
    ready_.emplace(facts_.size);
    Error const error = compress(progress);
    isPacked_ = !error && ready_->size() < facts_.size;
    if (!isPacked_)
        ready_.reset();
    return error;
}

void ioPackageFileSource::Impl::load() {
    if (isPacked_ || facts_.size > Ready::mostInMemory || facts_.kind != qvPlatform::FileKind::file)
        return;
    ready_.emplace(facts_.size);
    if (!ready_->load(file_, facts_.size))
        ready_.reset();
}

Error ioPackageFileSource::Impl::compress(qvUtil::Progress * progress) {
    ioClosing<ioBufferedStreamInput> input;
    input.openFile(file_);
    if (!input.good())
        return ioPackageCopy::couldNotRead(file_);
    auto const failed = [&] { return Error(10, L"Error compressing file: %S", file_.asWChar()); };
    ioClosing<ioBufferedStreamOutput> output;
    ready_->open(output);
    output.compress(true);
    output.checksum(true);
    ioPackageCopy::Block const block(facts_.size);
    ioPackageCopy::Report const report(progress, facts_.size);
    std::int64_t copied = 0;
    // One byte more than there should be is enough to know that it has grown.
    while (copied <= facts_.size) {
        int const count = input.readData(block.get(), block.size());
        if (count <= 0)
            break;
        output.writeData(block.get(), count);
        if (!output.good())
            return failed();
        copied += count;
        report(copied);
    }
    output.close();
    if (copied > facts_.size || (ioPackageCopy::isAtEnd(input) && copied != facts_.size))
        return Error(8, L"While compressing file it changed size: %S", file_.asWChar());
    if (!ioPackageCopy::isAtEnd(input))
        return Error(9, L"Error reading file: %S", file_.asWChar());
    return output.good() && ready_->finish() ? Error() : failed();
}

Error ioPackageFileSource::Impl::open(ioBufferedStreamInput & stream) {
    if (ready_)
        ready_->open(stream);
    else
        stream.openFile(file_);
    return stream.good() ? Error() : ioPackageCopy::couldNotRead(file_);
}

// ---- What users see

ioPackageFileSource::ioPackageFileSource() = default;

ioPackageFileSource::ioPackageFileSource(ioPackageFileSource && other) noexcept = default;

ioPackageFileSource & ioPackageFileSource::operator=(ioPackageFileSource && other) noexcept = default;

ioPackageFileSource::~ioPackageFileSource() = default;

Error ioPackageFileSource::prepare(IString const & file, bool compress, qvUtil::Progress * progress) {
    impl_.reset();
    auto impl = std::make_unique<Impl>(file);
    if (Error const error = impl->look())
        return error;
    if (compress) {
        if (Error const error = impl->pack(progress))
            return error;
    }
    impl->load();
    impl_ = std::move(impl);
    if (progress != nullptr)
        progress->set(1);
    return Error();
}

IString const & ioPackageFileSource::getFile() const {
    static IString const none;
    return impl_ ? impl_->file() : none;
}

std::int64_t ioPackageFileSource::getSize() const { return impl_ ? impl_->size() : 0; }

std::int64_t ioPackageFileSource::getTimeStamp() const { return impl_ ? impl_->timestamp() : 0; }

bool ioPackageFileSource::getCompressed() const { return impl_ && impl_->isCompressed(); }
