// The failure value of the library.

#ifndef qvUtilError_h
#define qvUtilError_h

#include "Base/Strings/qvStringIString.h"

#include <cstdarg>

namespace qvUtil {

class [[nodiscard]] Error;

namespace detail {

// Names the type that an argument list has as a parameter, whatever it is, without conversions to it.
void acceptListFunction(void (*)(std::va_list));
template <class Arguments>
concept ArgumentList = requires(void (*function)(Arguments)) {
    acceptListFunction(function);
};

} // namespace detail

/// A number and an optional text. Number 0 is success, and a default-constructed Error is; any other number is a
/// failure, with or without a text. There is no catalogue of numbers: each subsystem counts its own, from 1 for the
/// general failure, and a number means something only together with the operation that gave it.
///
/// An Error reaches its caller in one of three ways, fixed for each operation: returned, as the second of a pair with
/// the result, or thrown by value. It is a plain value: a copy has a text of its own. Success allocates nothing.
/// message() uses a buffer inside the text, so two threads may not read one Error at once.
///
///     if (qvUtil::Error const error = file.open(flags))
///         report(error.num(), error.message());
///
/// Formats are those of qvStringFormat.h; a narrow one is converted to a wide one first. An empty format, or a null
/// one, gives no text.
class QV_EXPORT Error {
public:
    // A qv::vector may move it by its bytes.
    using isBitwiseMovable = Error;

    Error() noexcept = default;
    Error(Error const & other);
    /// Takes the text over; `other` keeps its number, without a text.
    Error(Error && other) noexcept : number_(other.number_), message_(other.message_) { other.message_ = nullptr; }
    Error(int num, char const * format, ...);
    Error(int num, wchar_t const * format, ...);
    /// With an argument list that is already started. Nothing that merely converts to one is taken for it, so that
    /// Error(1, "%d", 0) formats its 0.
    template <detail::ArgumentList Arguments>
    Error(int num, char const * format, Arguments args) : number_(num) {
        setMsg(format, args);
    }
    template <detail::ArgumentList Arguments>
    Error(int num, wchar_t const * format, Arguments args) : number_(num) {
        setMsg(format, args);
    }
    /// The text as it stands: a '%' in it means nothing.
    Error(int num, qvString::IString const & text);
    virtual ~Error();

    int num() const { return number_; }
    /// Whether the operation failed.
    operator bool() const { return number_ != 0; }
    /// The text in the multibyte encoding, "" when there is none; valid until this Error changes.
    char const * message() const;

    /// The same number and the same text; no text and an empty one differ.
    bool operator==(Error const & other) const;
    bool operator!=(Error const & other) const { return !(*this == other); }

    void swap(Error & other) noexcept;
    Error & operator=(Error const & other);
    Error & operator=(Error && other) noexcept {
        swap(other);
        return *this;
    }

protected:
    /// Replaces the text by a formatted one, or removes it when the format is empty or null.
    void setMsg(char const * format, std::va_list args);
    void setMsg(wchar_t const * format, std::va_list args);

private:
    int number_ = 0;
    qvString::IString * message_ = nullptr;
};

} // namespace qvUtil

#endif
