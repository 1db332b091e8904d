// Files made ready for a package, in their order, by all processors.

#ifndef Preparation_h
#define Preparation_h

#include "Base/DataFiles/ioPackageFileSource.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

struct FileToAdd {
    std::string file;  // as the system has it
    std::string entry; // the name in the package
    std::int64_t size; // bytes
};

struct Prepared {
    ioPackageFileSource source;
    qvUtil::Error error;
};

// Prepares files ahead of the one that is taken next, so many that the processors have work and the memory holds what
// waits.
class Preparation {
public:
    // The files are to stay where they are.
    Preparation(std::vector<FileToAdd> const & files, bool compress);
    Preparation(Preparation const &) = delete;
    Preparation & operator=(Preparation const &) = delete;
    // Waits for the files that are being worked at.
    ~Preparation();

    // The next file, once for each. While a worker makes it ready, `waiting` is called ten times a second with the
    // bytes that were read so far, of all files.
    Prepared take(std::function<void(std::int64_t bytes)> const & waiting);

private:
    struct Slot {
        Prepared prepared;
        std::exception_ptr thrown;
        bool isReady = false;
    };

    void work();
    void takeReady(std::function<void(std::int64_t bytes)> const & waiting);
    Slot & nextSlot() { return slots_[taken_ % slots_.size()]; }
    bool hasRoom() const; // for a worker to go on
    std::size_t claimed() const;
    Slot prepare(FileToAdd const & file);

    std::vector<FileToAdd> const & files_;
    bool const compress_;
    std::atomic<std::int64_t> bytes_ = 0; // read so far
    std::mutex mutex_;                    // of all below
    std::condition_variable ready_;       // a file that is waited for
    std::condition_variable room_;        // for more files ahead
    std::vector<Slot> slots_;             // of the files that are ahead, in a ring
    std::size_t begun_ = 0;
    std::size_t taken_ = 0;
    std::int64_t ahead_ = 0; // bytes of the files that are begun and not taken
    std::size_t numIdle_ = 0;
    bool isEnding_ = false;
    std::vector<std::thread> workers_;
    // Of the caller alone: files that it has taken, and the next of them to be given away.
    std::vector<Slot> inHand_;
    std::size_t nextInHand_ = 0;
};

#endif
