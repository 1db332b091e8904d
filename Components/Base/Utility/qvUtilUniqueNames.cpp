#include "Base/Utility/qvUtilUniqueNames.h"

#include "Base/Utility/qvImplBase.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstddef>
#include <string_view>
#include <system_error>

namespace qvUtil {

namespace {

using qvString::CString;

constexpr int namesInBlock = 10;

// A name without its suffix: the base, and the digits of its number. They are parts of the name's own text.
struct Parts {
    std::string_view base;
    std::string_view digits;
    bool hasSuffix;
};

bool areDigits(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// The number of the digits; 0 where there are none, and where its successor would not fit an int.
int numberOf(std::string_view digits) {
    int number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return number == INT_MAX ? 0 : number;
}

} // namespace

class UniqueNamesImpl : public qv::ImplBase {
public:
    UniqueNamesImpl(CString const & newSeparator, CString const & newSuffix)
        : suffix(newSuffix), separator(newSeparator) {
        names.setNumElementsInBlock(namesInBlock);
    }

    Parts partsOf(std::string_view name) const;
    int greatestNumberBeside(Parts const & parts) const;
    CString numbered(Parts const & parts, int number) const;
    CString insert(CString const & name);

    qv::set<CString> names;
    CString suffix;
    CString separator;
};

Parts UniqueNamesImpl::partsOf(std::string_view name) const {
    std::string_view const end = suffix;
    bool const hasSuffix = !end.empty() && name.size() > end.size() && name.ends_with(end);
    if (hasSuffix)
        name.remove_suffix(end.size());
    std::string_view const gap = separator;
    std::size_t const found = gap.empty() ? std::string_view::npos : name.rfind(gap);
    if (found == std::string_view::npos || found + 1 == name.size() || !areDigits(name.substr(found + gap.size())))
        return {name, {}, hasSuffix};
    return {name.substr(0, found), name.substr(found + gap.size()), hasSuffix};
}

// The names that begin with the base stand side by side, but between those with the same base others may stand.
int UniqueNamesImpl::greatestNumberBeside(Parts const & parts) const {
    int greatest = 0;
    for (auto it = names.lower_bound(CString(parts.base)); it != names.end(); ++it) {
        std::string_view const name = *it;
        if (!name.starts_with(parts.base))
            break;
        Parts const others = partsOf(name);
        if (others.hasSuffix == parts.hasSuffix && others.base == parts.base)
            greatest = std::max(greatest, numberOf(others.digits));
    }
    return greatest;
}

CString UniqueNamesImpl::numbered(Parts const & parts, int number) const {
    char digits[16];
    auto const [end, failure] = std::to_chars(digits, digits + sizeof digits, number);
    static_cast<void>(failure);
    CString name(parts.base);
    name.append(separator).append(CString(digits, static_cast<int>(end - digits)));
    if (parts.hasSuffix)
        name.append(suffix);
    return name;
}

CString UniqueNamesImpl::insert(CString const & name) {
    if (names.insert(name).second)
        return name;
    Parts const parts = partsOf(name);
    // The next number is free as a rule. It is not where numbered names are parted in another way than they were put
    // together: without a separator, with a suffix of digits, or behind a number that was too large to be counted.
    for (int number = greatestNumberBeside(parts) + 1;; number = number == INT_MAX ? 1 : number + 1) {
        CString const result = numbered(parts, number);
        if (names.insert(result).second)
            return result;
    }
}

UniqueNames::UniqueNames(CString const & separator, CString const & suffix)
    : impl_(new UniqueNamesImpl(separator, suffix)), owns_(true) {}
UniqueNames::~UniqueNames() {
    if (owns_)
        delete impl_;
    impl_ = nullptr;
}

UniqueNamesImpl & UniqueNames::impl() const { return static_cast<UniqueNamesImpl &>(*impl_); }

void UniqueNames::setSuffix(CString const & suffix) { impl().suffix = suffix; }
void UniqueNames::setSeparator(CString const & separator) { impl().separator = separator; }
qv::set<CString> const & UniqueNames::getNames() const { return impl().names; }
CString UniqueNames::insert(CString const & name) { return impl().insert(name); }

} // namespace qvUtil
