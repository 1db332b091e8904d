#include "Base/Utility/qvUtilProgress.h"

#include "Base/Strings/qvStringCString.h"
#include "Base/Utility/qvReferenceCount.h"

#include <cmath>
#include <utility>

namespace qvUtil {

// A node of the tree. Children hold their parents, never the other way round.
class Progress::Impl : public qv::ReferenceCount {
public:
    ~Impl() override;

    virtual void set(double value) = 0;
    virtual double get() const = 0;
    virtual Signal & getSigUpdate() = 0;
    virtual Signal & getSigDestroy() = 0;
    virtual Signal & getSigCaption() = 0;
    virtual Signal & getSigCheckCancel() = 0;
    virtual void cancel() = 0;
    virtual bool cancelled() = 0;
    virtual void setCaption(char const * caption) = 0;
    virtual char const * getCaption() const = 0;
    virtual void finish() = 0;

protected:
    Impl() : root(this) {}
    Impl(qv::Reference<Impl> above, double share) : parent(std::move(above)), root(parent->root), scale(share) {}

    // What the addition means to the parent. A sum that is no finite number would stick: it is not made.
    double add(double difference) {
        double const sum = value + difference;
        if (!std::isfinite(sum))
            return 0;
        value = sum > 1 ? 1 : sum;
        return difference * scale;
    }

    qv::Reference<Impl> parent; // null at the root
    Impl * root;
    double value = 0;
    double scale = 1;
    bool finished = false;

    friend class SubProgress;
};

// Phases may be nested as deeply as anybody likes: the ones above, if nobody else holds them, go one after the other
// and not each inside the destructor of the one below.
Progress::Impl::~Impl() {
    while (parent && parent->refs() == 1) {
        qv::Reference<Impl> above = std::move(parent->parent);
        parent = std::move(above);
    }
}

class RootProgress : public Progress::Impl {
public:
    explicit RootProgress(Progress * handle) : owner(handle) {}

    void set(double newValue) override {
        add(newValue - value);
        emit(update);
    }
    double get() const override { return value; }
    Progress::Signal & getSigUpdate() override { return update; }
    Progress::Signal & getSigDestroy() override { return destroy; }
    Progress::Signal & getSigCaption() override { return captionChange; }
    Progress::Signal & getSigCheckCancel() override { return checkCancel; }
    void cancel() override { cancelFlag = true; }
    bool cancelled() override {
        if (!cancelFlag)
            emit(checkCancel);
        return cancelFlag;
    }
    void setCaption(char const * text) override {
        caption = qvString::CString(text);
        emit(captionChange);
    }
    char const * getCaption() const override { return caption.asChar(); }
    void finish() override {
        emit(destroy);
        finished = true;
    }

private:
    // The handle is there until the node is finished.
    void emit(Progress::Signal & signal) {
        if (!finished)
            signal.emit(*owner);
    }

    Progress * owner;
    bool cancelFlag = false;
    qvString::CString caption;
    Progress::Signal update;
    Progress::Signal destroy;
    Progress::Signal captionChange;
    Progress::Signal checkCancel;
};

class SubProgress : public Progress::Impl {
public:
    SubProgress(qv::Reference<Impl> above, double share) : Impl(std::move(above), share) {}

    void set(double newValue) override {
        double difference = newValue - value;
        for (Impl * node = this; node != root; node = node->parent.get())
            difference = node->add(difference);
        root->set(root->get() + difference);
    }
    double get() const override { return root->get(); }
    Progress::Signal & getSigUpdate() override { return root->getSigUpdate(); }
    Progress::Signal & getSigDestroy() override { return root->getSigDestroy(); }
    Progress::Signal & getSigCaption() override { return root->getSigCaption(); }
    Progress::Signal & getSigCheckCancel() override { return root->getSigCheckCancel(); }
    void cancel() override { root->cancel(); }
    bool cancelled() override { return root->cancelled(); }
    void setCaption(char const * text) override { root->setCaption(text); }
    char const * getCaption() const override { return root->getCaption(); }
    void finish() override {
        if (!hasEnded())
            set(1.0);
        finished = true;
    }

private:
    bool hasEnded() const {
        for (Impl const * node = this; node; node = node->parent.get())
            if (node->finished)
                return true;
        return false;
    }
};

Progress::Progress() : impl_(new RootProgress(this)) {}

// A callback may make the handle's node another one, or end the handle: what emits holds the node meanwhile.
Progress::~Progress() { qv::Reference<Impl>(impl_)->finish(); }

void Progress::set(double value) { qv::Reference<Impl>(impl_)->set(value); }
double Progress::get() const { return impl_->get(); }

Progress::Signal & Progress::getSigUpdate() { return impl_->getSigUpdate(); }
Progress::Signal & Progress::getSigDestroy() { return impl_->getSigDestroy(); }
Progress::Signal & Progress::getSigCaption() { return impl_->getSigCaption(); }
Progress::Signal & Progress::getSigCheckCancel() { return impl_->getSigCheckCancel(); }

void Progress::cancel() { impl_->cancel(); }
bool Progress::cancelled() { return qv::Reference<Impl>(impl_)->cancelled(); }

void Progress::setCaption(char const * caption) { qv::Reference<Impl>(impl_)->setCaption(caption); }
char const * Progress::getCaption() const { return impl_->getCaption(); }

void Progress::subPhase(double share, Progress & sub) {
    qv::Reference<Impl> const above = impl_;
    qv::Reference<Impl>(sub.impl_)->finish();
    sub.impl_ = new SubProgress(above, std::isfinite(share) ? share : 0);
}

} // namespace qvUtil
