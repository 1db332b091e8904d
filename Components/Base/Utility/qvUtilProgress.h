// How far a long operation has come, and whether its user wants it to stop.

#ifndef qvUtilProgress_h
#define qvUtilProgress_h

#include "Base/Signals/qvRTBSignal.h"
#include "Base/Utility/qvReference.h"
#include "Base/qvBaseConfig.h"

namespace qvUtil {

/// A long operation takes a Progress and reports from 0 to 1 on it. It hands each of its phases a sub-phase with a
/// share of its own range, on which the phase reports from 0 to 1 again, and so on: the shares compose on the way to
/// the root. Only the root has signals, a caption and the flag of cancelling; every other node asks it.
///
///     void save(Document & document, qvUtil::Progress & progress) {
///         qvUtil::Progress collecting, writing;
///         progress.subPhase(0.25, collecting);
///         collect(document, collecting);
///         progress.subPhase(0.75, writing);
///         for (int i = 0; i < n && !progress.cancelled(); ++i) {
///             write(document, i);
///             writing.set(double(i + 1) / n);
///         }
///     }
///
/// What shows the progress owns the root, connects to its signals, and keeps the handle alive longer than every
/// sub-phase, since the signals hand that handle out. When the handle goes first all the same, the sub-phases work on,
/// but no signal is emitted any more.
///
/// What a callback throws comes out of the call that emitted. A handle that goes may emit too, and what is thrown then
/// ends the program. A tree is used by one thread at a time.
class QV_EXPORT Progress {
public:
    class Impl;
    using Signal = qvRTB::SignalArg<Progress &>;

    /// A root, at 0.
    Progress();
    /// A root emits its destroy signal. A sub-phase completes its share first, unless it or one that it is part of has
    /// ended already.
    ~Progress();
    Progress(Progress const &) = delete;
    Progress & operator=(Progress const &) = delete;

    /// How far this phase has come. A value above 1 leaves the phase at 1, and the phases above are told the whole
    /// difference, so that they run ahead of their shares; a value below the last one moves them all back. NaN and
    /// infinities move nothing. The root emits its update signal in any case.
    void set(double value);
    /// How far the whole has come: the value of the root, whatever node is asked.
    double get() const;

    /// The root's signals: after each change of the value, at the end of the root's handle, after each change of the
    /// caption, and when an operation asks whether it is cancelled. Their argument is the root's handle.
    Signal & getSigUpdate();
    Signal & getSigDestroy();
    Signal & getSigCaption();
    Signal & getSigCheckCancel();

    /// Sets the root's flag, for good.
    void cancel();
    /// Whether somebody has called cancel(). As long as nobody has, the check-cancel signal is emitted first, and its
    /// callbacks may do so now: an operation that asks often is what keeps the user's wish looked at.
    bool cancelled();

    /// What the operation is doing now, for its user. The text is copied; null is an empty one.
    void setCaption(char const * caption);
    /// Valid until the next change of the caption.
    char const * getCaption() const;

    /// Makes `sub` a sub-phase of this node, at 0, whose way from 0 to 1 moves this node by `share`. What `sub` was
    /// before ends as it does in the destructor. An infinite share, and NaN, count as 0.
    void subPhase(double share, Progress & sub);

private:
    qv::Reference<Impl> impl_; // never null
};

} // namespace qvUtil

#endif
