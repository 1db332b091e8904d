// The core that all qv::vector types share: growth, shifting and copying of elements whose type it does not know.

#ifndef qvVectorImpl_h
#define qvVectorImpl_h

#include <cstddef>
#include <utility>

#include "Base/qvBaseConfig.h"

namespace qv {

/*
 * A growing array of elements of one size, described by a table of functions. Typed code uses qv::vector<T>; the core
 * is for code that handles arrays without knowing their type.
 *
 * Elements move bitwise, by realloc and memmove, and no function is called for it. Positions are addresses of elements;
 * an operation that adds elements or sets the capacity invalidates them. Sources of copies may lie in the vector
 * itself.
 *
 * Allocation failure raises std::bad_alloc, a count below 0 or past the 32-bit range std::length_error. When that
 * happens, or when a function of the table throws, the elements are as they were (the capacity may have grown), except
 * in assign, which leaves a valid vector. A range function that throws must have destroyed what it had constructed.
 */
class QV_EXPORT VectorImpl {
public:
    struct TypeUtil {
        void (*copyConstruct)(void * dst, void const * src);             // null when elements cannot be copied
        void (*copyConstructRange)(void * dst, void const * src, int n); // null when elements cannot be copied
        void (*destruct)(void * p);                                      // null when there is nothing to do
        void (*destructRange)(void * p, int n);                          // null when there is nothing to do
        int (*distance)(void const * last, void const * first);          // in elements
        int elementSize;                                                 // in bytes
        int alignment = 0;                                               // needed only beyond what malloc gives
    };

    explicit VectorImpl(TypeUtil const * typeUtil) { initialize(typeUtil); }
    VectorImpl(VectorImpl const & other) { initialize(other); }
    VectorImpl(int n, void (*constructRange)(void *, int), TypeUtil const * typeUtil) {
        initialize(n, constructRange, typeUtil);
    }
    VectorImpl(int n, void const * value, TypeUtil const * typeUtil) { initialize(n, value, typeUtil); }
    VectorImpl & operator=(VectorImpl const &) = delete;
    ~VectorImpl() {
        if (data_)
            sFreeStorage(data_, size_, typeUtil_);
    }

    int size() const { return size_; }
    int capacity() const { return capacity_; }

    // The first element; null when the capacity is 0.
    void * data() { return data_; }
    void const * data() const { return data_; }

    // Makes room for exactly n elements when n is above the capacity. Never shrinks; a count below 0 changes nothing.
    void reserve(int n);

    // Destroys the elements. The storage stays.
    void clear() noexcept;

    // Cuts the vector, or enlarges it by elements that the function constructs; with a null function they stay raw, and
    // the caller constructs them.
    void setSize(int n, void (*constructRange)(void *, int));
    void setSize(int n, void const * value);

    // One element more at the end. The capacity grows by 8 below 32 and doubles from there on.
    void append(void const * value);
    void append(void const * value, void (*copyOne)(void *, void const *));
    void append(void (*construct)(void *)); // null leaves the element raw
    // For elements that are pointers: stores p itself.
    void appendAndAssignPtr(void const * p);
    // The raw slot, which counts already: the caller must construct it.
    void * appendAndReturnPtr();

    // Copies of the other's elements. The capacity becomes the new size exactly, which can shrink it.
    void append(VectorImpl const & other);

    // One element more in front of pos. Gives its address, which differs from pos when the storage moved.
    void * insert(void * pos, void const * value);
    void * insert(void * pos, void const * value, void (*copyOne)(void *, void const *));
    void * insert(void * pos, void (*construct)(void *)); // null leaves the element raw
    void * insertAndAssignPtr(void * pos, void const * p);
    void * insertAndReturnPtr(void * pos);

    // Several elements in front of pos. When the capacity does not suffice it becomes the new size exactly.
    void insert(void * pos, int n, void const * value);
    void insert(void * pos, void const * first, void const * last);
    // distance and copyRange may take elements of another kind than the vector's.
    void insert(void * pos, void const * first, void const * last, int (*distance)(void const *, void const *),
                void (*copyRange)(void *, void const *, int));

    // Replaces all elements by copies of a range.
    void assign(void const * first, void const * last);
    void assign(void const * first, void const * last, int (*distance)(void const *, void const *),
                void (*copyRange)(void *, void const *, int));

    // Replaces all elements by copies of the other's. The capacity becomes the other's size exactly.
    void copy(VectorImpl const & other);

    // Destroys the last element. The vector must not be empty.
    void eraseBack() noexcept;

    // Destroy and close the gap; give the first argument, where the next element is now. The capacity stays.
    void * erase(void * pos) noexcept;
    void * erase(void * first, void * last) noexcept;

    // Both vectors must have elements of the same type.
    void swap(VectorImpl & other) noexcept {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
        std::swap(capacity_, other.capacity_);
    }

    // For tests: whether the fields agree with one another.
    bool validate() const;

protected:
    void initialize(TypeUtil const * typeUtil) noexcept {
        data_ = nullptr;
        size_ = 0;
        capacity_ = 0;
        typeUtil_ = typeUtil;
    }
    void initialize(VectorImpl const & other);
    void initialize(int n, void (*constructRange)(void *, int), TypeUtil const * typeUtil);
    void initialize(int n, void const * value, TypeUtil const * typeUtil);

    // Sets the capacity to exactly n, destroying elements beyond; 0 frees the storage. Gives the storage.
    void * setCapacity(int n);

    // Enlarges the capacity by one step, whether there is room or not. Gives the storage.
    void * growByOne();

    // For an append that found no room behind counting its element: takes the count back when there is no memory.
    void growByOneAndAssignPtr(void const * p);

    // Destroys the elements and frees the storage. The fields keep their values and must not be used any more.
    void freeStorage() noexcept;

    // A raw gap of n elements in front of the element at index; the size counts it. closeGap takes it back.
    void * openGap(int index, int n);
    void closeGap(int index, int n) noexcept;

    // The one-element form, with the growth steps.
    void * openSlot(int index);

    // What follows is given values and gives values, not the vector: one that is used in one function alone, and of
    // which no call gets the address, is kept in registers.
    struct Storage {
        void * data;
        int capacity;
    };
    // The storage of a full vector with one growth step more.
    static Storage sGrown(Storage full, TypeUtil const * typeUtil);
    // For an element that must not be touched before there is memory for it: storage of the next growth step's capacity
    // beside the full one; and the move into it, around the element that was constructed there at index. Storage that
    // is not used after all goes back with sFree.
    static Storage sAllocatedStep(Storage full, TypeUtil const * typeUtil);
    static void sMoveInto(Storage larger, int index, Storage full, TypeUtil const * typeUtil) noexcept;
    static void sFree(void * storage) noexcept;
    static void sFreeStorage(void * data, int size, TypeUtil const * typeUtil) noexcept;

    // Move all elements of another vector of the same type in front of the one at index, or in place of all that are
    // here. That one becomes empty.
    void insertMoved(int index, VectorImpl & other);
    void replaceBy(VectorImpl & other) noexcept;

    void * data_;
    int size_;
    int capacity_;
    TypeUtil const * typeUtil_;

private:
    unsigned char * at(int index) const;
    int indexOf(void const * pos) const;
    bool contains(void const * p) const;
    void reallocate(int n);
    void enlargeTo(int n);
    void destroy(int index, int n) noexcept;
    void shiftUp(int index) noexcept;
    template <typename Construct>
    void * insertOne(int index, Construct construct);
    void fill(void const * first, int n, void (*copyRange)(void *, void const *, int));
};

} // namespace qv

#endif
