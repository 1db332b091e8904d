// The growing array in which a packet is built or into which it is read.

#ifndef ioPacketBytes_h
#define ioPacketBytes_h

#include <cstddef>
#include <cstring>

// Starts with 50000 bytes and doubles. The bytes between begin and the cursor are the packet so far.
class ioPacketBytes {
public:
    ioPacketBytes() = default;
    ~ioPacketBytes();
    ioPacketBytes(ioPacketBytes const &) = delete;
    ioPacketBytes & operator=(ioPacketBytes const &) = delete;

    // Takes the first memory. Until then there is room for nothing and the array does not grow.
    void allocate();

    char * begin() const { return begin_; }
    char * cursor() const { return cursor_; }
    int size() const { return static_cast<int>(cursor_ - begin_); }
    int capacity() const { return static_cast<int>(end_ - begin_); }
    void rewind() {
        cursor_ = begin_;
        overflowed_ = false;
    }
    // Whether something did not go in since the last rewind.
    bool overflowed() const { return overflowed_; }
    void moveTo(int position) { cursor_ = begin_ + position; }
    void advance(std::size_t count) { cursor_ += count; }

    // Makes room for so many bytes behind the cursor, and one more. False when the packet would pass the size that its
    // 32-bit fields can tell.
    bool reserve(std::size_t count) { return static_cast<std::size_t>(end_ - cursor_) > count || grow(count); }

    bool put(void const * bytes, std::size_t count) {
        if (!reserve(count)) [[unlikely]] {
            return false;
        }
        std::memcpy(cursor_, bytes, count);
        cursor_ += count;
        return true;
    }

private:
    bool grow(std::size_t count);

    char * begin_ = nullptr;
    char * cursor_ = nullptr;
    char * end_ = nullptr;
    bool overflowed_ = false;
};

#endif
