// The physical lines of a catalog file.

#ifndef CatalogLines_h
#define CatalogLines_h

#include "Base/Platform/PlatformFile.h"

#include <cstddef>
#include <memory>
#include <string_view>

namespace qvStringTable {

// Lines of at most 4097 bytes with their line feed; what is longer comes in pieces, cut between characters. CR LF
// counts and reads as LF.
class CatalogLines {
public:
    CatalogLines() = default;
    CatalogLines(CatalogLines const &) = delete;
    CatalogLines & operator=(CatalogLines const &) = delete;
    ~CatalogLines();

    qvPlatform::FileResult open(qvString::IString const & name);

    struct Line {
        std::string_view text; // without its line feed; until the next call
        bool hasEnd;           // whether there was one
    };
    enum class Outcome { line, end, failed };
    // Lines in front of a failure come first; what is no whole line there is not given. Behind them every call fails.
    Outcome next(Line & line);
    qvPlatform::FileResult failure() const { return failure_; }

private:
    static constexpr std::size_t longestLine = 4097;
    static constexpr std::size_t bufferSize = 65536;

    bool fill();
    std::size_t lengthOfPiece() const;

    qvPlatform::Descriptor descriptor_ = qvPlatform::noDescriptor;
    bool isAtEnd_ = false;
    qvPlatform::FileResult failure_;
    std::unique_ptr<char[]> buffer_;
    std::size_t at_ = 0;
    std::size_t end_ = 0;
};

} // namespace qvStringTable

#endif
