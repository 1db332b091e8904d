#include "Base/Utility/qvUtilError.h"

#include <memory>
#include <utility>

namespace qvUtil {

namespace {

// The text is complete before anything is changed, so that nothing is lost when there is no memory for it.
template <class Char>
std::unique_ptr<qvString::IString> formatted(Char const * format, std::va_list args) {
    if (format == nullptr || *format == Char())
        return nullptr;
    auto text = std::make_unique<qvString::IString>();
    text->vformat(format, args);
    return text;
}

qvString::IString * copyOf(qvString::IString const & text) {
    auto copy = std::make_unique<qvString::IString>();
    copy->assign(text);
    return copy.release();
}

} // namespace

Error::Error(Error const & other)
    : number_(other.number_), message_(other.message_ == nullptr ? nullptr : copyOf(*other.message_)) {}

Error::Error(int num, char const * format, ...) : number_(num) {
    std::va_list args;
    va_start(args, format);
    setMsg(format, args);
    va_end(args);
}

Error::Error(int num, wchar_t const * format, ...) : number_(num) {
    std::va_list args;
    va_start(args, format);
    setMsg(format, args);
    va_end(args);
}

Error::Error(int num, qvString::IString const & text) : number_(num), message_(copyOf(text)) {}

Error::~Error() { delete message_; }

char const * Error::message() const { return message_ == nullptr ? "" : message_->asMultibyte(); }

bool Error::operator==(Error const & other) const {
    if (number_ != other.number_ || (message_ == nullptr) != (other.message_ == nullptr))
        return false;
    return message_ == nullptr || qvString::equal(*message_, *other.message_);
}

void Error::swap(Error & other) noexcept {
    std::swap(number_, other.number_);
    std::swap(message_, other.message_);
}

Error & Error::operator=(Error const & other) {
    Error copy(other);
    swap(copy);
    return *this;
}

void Error::setMsg(char const * format, std::va_list args) {
    delete std::exchange(message_, formatted(format, args).release());
}

void Error::setMsg(wchar_t const * format, std::va_list args) {
    delete std::exchange(message_, formatted(format, args).release());
}

} // namespace qvUtil
