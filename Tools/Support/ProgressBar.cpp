#include "Support/ProgressBar.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <unistd.h>

namespace {

constexpr std::size_t mostOfCaption = 40;

bool isContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// The end of a text that is too long, from the begin of a character on.
std::string shortened(std::string const & text) {
    if (text.size() <= mostOfCaption)
        return text;
    std::size_t start = text.size() - mostOfCaption;
    while (start < text.size() && isContinuation(text[start]))
        ++start;
    return "..." + text.substr(start);
}

} // namespace

ProgressBar::ProgressBar(Use use, qvUtil::Progress & progress)
    : nextShow_(Clock::now() + std::chrono::milliseconds(500)) {
    if (use == Use::never || ::isatty(STDERR_FILENO) != 1)
        return;
    progress.getSigUpdate().addCallback(this, &ProgressBar::show);
    progress.getSigCaption().addCallback(this, &ProgressBar::show);
}

void ProgressBar::show(qvUtil::Progress & progress) {
    if (Clock::now() < nextShow_)
        return;
    constexpr std::size_t width = 30;
    double const done = std::clamp(progress.get(), 0.0, 1.0);
    std::size_t const filled = static_cast<std::size_t>(done * static_cast<double>(width));
    std::fprintf(stderr, "\r\x1B[K[%s%s] %3d%% %s", std::string(filled, '#').c_str(),
                 std::string(width - filled, ' ').c_str(), static_cast<int>(done * 100),
                 shortened(progress.getCaption()).c_str());
    std::fflush(stderr);
    isShown_ = true;
    nextShow_ = Clock::now() + std::chrono::milliseconds(100);
}

void ProgressBar::clear() {
    if (isShown_)
        std::fputs("\r\x1B[K", stderr);
    isShown_ = false;
}
