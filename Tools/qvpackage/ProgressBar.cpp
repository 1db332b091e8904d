#include "ProgressBar.h"

#include <algorithm>
#include <cstdio>
#include <unistd.h>

ProgressBar::ProgressBar(Use use, std::int64_t total)
    : isUsed_(use == Use::whereATerminalIs && ::isatty(STDERR_FILENO) == 1), total_(std::max<std::int64_t>(total, 1)),
      nextShow_(Clock::now() + std::chrono::milliseconds(500)) {}

void ProgressBar::advance(std::int64_t amount, std::string const & next) {
    done_ = std::min(done_ + amount, total_);
    if (!isUsed_ || Clock::now() < nextShow_)
        return;
    constexpr int width = 30;
    constexpr std::size_t mostOfName = 40;
    int const filled = static_cast<int>(static_cast<double>(done_) / static_cast<double>(total_) * width);
    int const percent = static_cast<int>(static_cast<double>(done_) / static_cast<double>(total_) * 100);
    std::string const name = next.size() > mostOfName ? "..." + next.substr(next.size() - mostOfName) : next;
    std::fprintf(stderr, "\r\x1B[K[%s%s] %3d%% %s", std::string(static_cast<std::size_t>(filled), '#').c_str(),
                 std::string(static_cast<std::size_t>(width - filled), ' ').c_str(), percent, name.c_str());
    std::fflush(stderr);
    isShown_ = true;
    nextShow_ = Clock::now() + std::chrono::milliseconds(100);
}

void ProgressBar::clear() {
    if (isShown_)
        std::fputs("\r\x1B[K", stderr);
    isShown_ = false;
}
