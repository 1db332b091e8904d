// How far a long piece of work has come, on standard error where that is a terminal.

#ifndef ProgressBar_h
#define ProgressBar_h

#include <chrono>
#include <cstdint>
#include <string>

class ProgressBar {
public:
    enum class Use { whereATerminalIs, never };

    ProgressBar(Use use, std::int64_t total);
    ProgressBar(ProgressBar const &) = delete;
    ProgressBar & operator=(ProgressBar const &) = delete;
    ~ProgressBar() { clear(); }

    // Work that is done, and what comes next. Nothing shows in the first half second.
    void advance(std::int64_t amount, std::string const & next);
    // Makes room for other text.
    void clear();

private:
    using Clock = std::chrono::steady_clock;

    bool isUsed_;
    bool isShown_ = false;
    std::int64_t total_;
    std::int64_t done_ = 0;
    Clock::time_point nextShow_;
};

#endif
