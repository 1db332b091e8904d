// What the logic engine knows, and what it is asked: a predicate with its arguments.

#ifndef qvPlgFact_h
#define qvPlgFact_h

#include "Base/Containers/qvLess.h"
#include "Base/Containers/qvVector.h"
#include "Base/Logic/qvPlgValue.h"
#include "Base/Strings/qvStringCString.h"
#include "Base/Utility/qvReference.h"
#include "Base/Utility/qvReferenceCount.h"
#include "Base/qvBaseConfig.h"

#include <cstdint>
#include <iosfwd>

namespace qvPlg {

// A plain value: copies share the arguments. No argument may be a null reference: the constructors throw Error number 1
// for one.
class QV_EXPORT Fact {
public:
    // Where null arguments sort among bound ones: by their data like any other, above them, or below them. Only the
    // last two make a goal with variables the bound of a range of facts.
    enum Compare { CompareExact, CompareHigh, CompareLow };

    Fact(qvString::CString const & predicate, qv::vector<qv::Reference<Value>> const & values);
    Fact(qvString::CString const & predicate, qv::Reference<Value> value);
    Fact(qvString::CString const & predicate, qv::Reference<Value> first, qv::Reference<Value> second);
    Fact(qvString::CString const & predicate, qv::Reference<Value> first, qv::Reference<Value> second,
         qv::Reference<Value> third);
    Fact(Fact const &) = default;
    Fact & operator=(Fact const &) = default;
    ~Fact() = default;

    qvString::CString const & predicate() const { return name_->text; }
    // What is put into the vector must be no null reference.
    qv::vector<qv::Reference<Value>> & values() { return values_; }
    qv::vector<qv::Reference<Value>> const & values() const { return values_; }
    int arity() const { return values_.size(); }
    // Whether no argument is a variable.
    bool allValuesBound() const;

    // CompareExact at first.
    void setCompare(Compare compare) { compare_ = compare; }
    bool compareLow() const { return compare_ == CompareLow; }
    bool compareHigh() const { return compare_ == CompareHigh; }

private:
    friend class Database;
    friend class FactRange;

    // The predicate is shared: the facts of one database hold one text for all of the same predicate, so that a search
    // recognises it by its address.
    struct Name : qv::ReferenceCount {
        explicit Name(qvString::CString const & t) : text(t) {}
        qvString::CString const text;
    };

    void checkValues() const;

    // What a search reads of each fact on its way stands together: these, and the number of the values. The key is only
    // there in a database, and tells what FactRange knows about the first argument without going there.
    qv::Reference<Name> name_; // never null
    std::uint64_t firstKey_ = 0;
    qv::vector<qv::Reference<Value>> values_;
    Compare compare_ = CompareExact;
};

// Negative, 0 or positive: by the predicate, by the arity, then by the arguments from the first on, among which a null
// one on one side only sorts as its own fact's setting has it.
QV_EXPORT int compare(Fact const & a, Fact const & b);

// Prints { "predicate", "argument", "argument" }.
QV_EXPORT std::ostream & operator<<(std::ostream & stream, Fact const & fact);

} // namespace qvPlg

namespace qv {

// Facts are ordered by `compare`. Inside the library sets of them are also searched with what tells by itself on which
// side of a fact it lies.
template <>
struct less<qvPlg::Fact> {
    using is_transparent = void;

    bool operator()(qvPlg::Fact const & a, qvPlg::Fact const & b) const { return qvPlg::compare(a, b) < 0; }
    template <class Probe>
    bool operator()(qvPlg::Fact const & fact, Probe const & probe) const {
        return probe.liesBehind(fact);
    }
};

} // namespace qv

#endif
