// Reads a catalog file into a table.

#ifndef CatalogReader_h
#define CatalogReader_h

#include "Base/Strings/Internal/CatalogLines.h"
#include "Base/Strings/qvStringTableStringTable.h"
#include "Base/Utility/qvUtilError.h"

#include <string>
#include <string_view>

namespace qvStringTable {

// Works on the UTF-8 of the file, for all that the format knows is ASCII, and makes wide text of the values only.
class CatalogReader {
public:
    CatalogReader(qvString::IString const & name, StringTable & table) : name_(name), table_(table) {}

    qvUtil::Error read();

private:
    qvUtil::Error addLine(CatalogLines::Line const & line);
    qvUtil::Error parse(std::string_view entry);
    qvUtil::Error assign(std::string_view key, std::string_view value);
    std::string_view withoutEscapes(std::string_view value);
    qvUtil::Error fileError(int number, char const * format, qvPlatform::FileResult const & result) const;
    qvUtil::Error textError(int number, char const * kind, char const * message, std::string_view text) const;
    qvUtil::Error parseError(char const * message, std::string_view entry) const;

    qvString::IString const & name_;
    StringTable & table_;
    CatalogLines lines_;
    int line_ = 0;
    std::string entry_; // what lines that go on have gathered
    std::string value_; // without escapes, used again and again
};

} // namespace qvStringTable

#endif
