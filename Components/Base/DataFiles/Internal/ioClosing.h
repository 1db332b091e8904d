// A stream that closes when it goes: one by itself leaves its file open then.

#ifndef ioClosing_h
#define ioClosing_h

template <class Stream>
class ioClosing : public Stream {
public:
    ~ioClosing() override { Stream::close(); }
};

#endif
