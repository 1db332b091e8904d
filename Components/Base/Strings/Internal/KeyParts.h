// The two parts of a key, without copies.

#ifndef KeyParts_h
#define KeyParts_h

#include <string_view>

namespace qvStringTable {

struct KeyParts {
    std::string_view setID;
    std::string_view name;
    bool areTwo;
};

/// What splitting at `.` gives, when it gives two parts; else an empty set and the whole as the name. A delimiter at
/// the end makes no empty part behind it.
KeyParts partsOf(std::string_view key);

bool isValidKey(std::string_view key);

} // namespace qvStringTable

#endif
