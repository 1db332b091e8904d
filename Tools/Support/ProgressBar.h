// How far a long piece of work has come, on standard error where that is a terminal.

#ifndef ProgressBar_h
#define ProgressBar_h

#include "Base/Signals/qvRTBSignalClient.h"
#include "Base/Utility/qvUtilProgress.h"

#include <chrono>

// Shows a root with its caption, which is taken for UTF-8 and is to be harmless to a terminal. Nothing shows in the
// first half second, and nothing is left on the line in the end.
class ProgressBar : public qvRTB::SignalClient {
public:
    enum class Use { whereATerminalIs, never };

    // The progress is to live longer.
    ProgressBar(Use use, qvUtil::Progress & progress);
    ProgressBar(ProgressBar const &) = delete;
    ProgressBar & operator=(ProgressBar const &) = delete;
    ~ProgressBar() { clear(); }

    // Makes room for other text.
    void clear();

private:
    using Clock = std::chrono::steady_clock;

    void show(qvUtil::Progress & progress);

    bool isShown_ = false;
    Clock::time_point nextShow_;
};

#endif
