// Set-up work that static objects put off until the program's main function has begun, in the order of dependencies.

#ifndef qvUtilInitializer_h
#define qvUtilInitializer_h

#include "Base/Utility/qvUtilError.h"
#include "Base/qvBaseConfig.h"

#include <cstdint>

namespace qvUtil {

// A static object that registers itself when its module is loaded and does its real work when the program calls
// `initializeAll()`. It is never taken off the lists, so it must live until `finalizeAll()`.
//
//     class CacheInitializer : public qvUtil::Initializer {
//     public:
//         CacheInitializer() { dependsOn(&diskInitializer); }
//         qvUtil::Error initialize() override { return openCache(); }
//     protected:
//         void finalize() override { closeCache(); }
//     };
//     static CacheInitializer cacheInitializer;
//
// Registration relies on no other static object. It belongs to the loading of modules, and the two calls to the thread
// that starts and ends the program: nothing here is locked.
class QV_EXPORT Initializer {
public:
    // The work. A failure is reported by `initializeAll()` and stops nothing. Must not throw.
    virtual Error initialize() = 0;

protected:
    // Undoes the work; also called when `initialize()` has failed.
    virtual void finalize();

public:
    virtual ~Initializer();

    // Registers the object for the next call of `initializeAll()`.
    Initializer();
    // A copy is not registered.
    Initializer(Initializer const &) = default;
    Initializer & operator=(Initializer const &) = default;

    // The weight by which `initializeAll()` sorts: 0 before, and when no dependency was declared at all; otherwise 1
    // plus the weights of all that depend on this object directly, once for each time that they said so. A weight
    // that does not fit stays at the largest number.
    int getCount() const { return count_; }

    // Calls `initialize()` of everything that was registered since the last call, dependencies first. Gives the last
    // failure of the run. What is registered meanwhile waits for the next call, which a program makes after it has
    // loaded a plug-in.
    //
    // Failure 1, "The dependencies of the initializers form a cycle.": that is no failure of an initializer, and takes
    // precedence over those. Everything has run then too, but on the cycle somebody ran before what it depends on.
    static Error initializeAll();

    // Calls `finalize()` of everything that was initialized in all calls of `initializeAll()`, the last one first. A
    // second call does nothing.
    static void finalizeAll();

protected:
    // `other` must be initialized before this object; called by the constructor of a subclass, or later before
    // `initializeAll()`. Only the address of `other` is kept, which need not have been constructed yet; null is no
    // dependency. One that never registers is not called.
    void dependsOn(Initializer * other);

private:
    class Weights;

    void addInit();

    [[maybe_unused]] char const * file_;
    std::int32_t count_;
};

} // namespace qvUtil

#endif
