// Sets the C runtime's locale for a test and puts the old one back.

#ifndef qvTestScopedLocale_h
#define qvTestScopedLocale_h

#include <gtest/gtest.h>

#include <clocale>
#include <string>

namespace qvTest {

class ScopedLocale {
public:
    explicit ScopedLocale(char const * name) : before_(std::setlocale(LC_ALL, nullptr)) {
        EXPECT_NE(std::setlocale(LC_ALL, name), nullptr) << "no locale " << name;
    }
    ~ScopedLocale() { std::setlocale(LC_ALL, before_.c_str()); }
    ScopedLocale(ScopedLocale const &) = delete;
    ScopedLocale & operator=(ScopedLocale const &) = delete;

private:
    std::string before_;
};

/// A locale with a multibyte encoding that every machine has.
inline constexpr char const * utf8Locale = "C.UTF-8";

} // namespace qvTest

#endif
