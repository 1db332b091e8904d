// The core that all qv::hash_map and qv::hash_set types share: chained buckets of nodes whose keys and values it does
// not know.

#ifndef qvHashTableImpl_h
#define qvHashTableImpl_h

#include <cstdint>
#include <utility>

#include "Base/Containers/qvBlockAllocator.h"
#include "Base/Containers/qvVectorImpl.h"
#include "Base/qvBaseConfig.h"

namespace qv {

/*
 * A hash table with separate chaining. A table of functions describes keys and values; typed code uses qv::hash_map,
 * qv::hash_set and their multi forms. The core never computes a hash: every operation is given it, and each node keeps
 * its own.
 *
 * Bucket counts are primes, from 7 to 1610612741; a new table has no bucket at all. Nodes never move, and a pointer to
 * one stays valid until it is erased. Memory of erased nodes is used again by the same table, and goes back to the heap
 * with the table.
 *
 * Allocation failure raises std::bad_alloc, a count past the 32-bit range std::length_error; then, and when a function
 * of the table throws, the elements are as they were, except in copy, which may leave the table empty.
 */
class QV_EXPORT HashTableImpl {
public:
    struct HashNodeImpl {
        unsigned hash;
        HashNodeImpl * next; // in the same bucket

        // The node that follows in the order of the buckets, or null.
        HashNodeImpl * nextItem(HashTableImpl * table) {
            return const_cast<HashNodeImpl *>(nextItem(static_cast<HashTableImpl const *>(table)));
        }
        HashNodeImpl const * nextItem(HashTableImpl const * table) const {
            return next ? next : table->firstNodeFrom(table->bucketNum(hash) + 1);
        }
    };

    struct TypeUtil {
        int nodeSize;    // in bytes
        int hasValue;    // 0 for a set
        int dataOffset;  // of key and value together, in the node, in bytes
        int keyOffset;   // in the node, in bytes
        int valueOffset; // in the node, in bytes
        // Null for a comparison that cannot be had without the typed container: then the operations here that take a
        // key are not for use.
        bool (*equal)(void const * nodeKey, void const * key);
        void (*copyKey)(void * dst, void const * src);   // null when keys cannot be copied
        void (*copyValue)(void * dst, void const * src); // null when there are no values, or they cannot be copied
        void (*constructValue)(void * dst);              // may be null
        void (*destructKey)(void * p);                   // null when there is nothing to do
        void (*destructValue)(void * p);                 // null when there is nothing to do
        int alignment = 0;                               // of nodes, needed only beyond what malloc gives
    };

    HashTableImpl(HashTableImpl const &) = delete;
    HashTableImpl & operator=(HashTableImpl const &) = delete;

    // A node with this hash and an equal key, or null.
    HashNodeImpl * findNode(unsigned hash, void const * key) {
        return const_cast<HashNodeImpl *>(std::as_const(*this).findNode(hash, key));
    }
    HashNodeImpl const * findNode(unsigned hash, void const * key) const;
    int count(unsigned hash, void const * key) const;

    // The node with this key, which is inserted, with a value from constructValue, when it is not there.
    HashNodeImpl * get(unsigned hash, void const * key);

    // A new node with copies of key and value (a null value leaves the node's raw), in a table that has at least one
    // bucket. The unique form gives an existing node with an equal key, unchanged; the other puts the new one directly
    // behind the first with an equal key. The number of buckets stays: call rehash(count + 1) first.
    HashNodeImpl * insert_unique_noresize(unsigned hash, void const * key, void const * value);
    HashNodeImpl * insert_non_unique_noresize(unsigned hash, void const * key, void const * value);

    // Null, and a node that is not in the table, are ignored.
    void eraseNode(HashNodeImpl * node) noexcept;
    // Gives how many there were. The key may lie in the table.
    int eraseKey(unsigned hash, void const * key);
    // Erases all nodes; raw ones that were allocated, but are not in the table, may be freed with them. The buckets
    // stay.
    void clear() noexcept;

    // Replaces all elements by copies of the other's, which may lie in one of the elements, and takes over its maximum
    // load factor.
    void copy(HashTableImpl const * other);
    void swap(HashTableImpl & other) noexcept;

    // The head of the first bucket that is not empty, or null.
    HashNodeImpl * firstNode() { return const_cast<HashNodeImpl *>(firstNodeFrom(0)); }
    HashNodeImpl const * firstNode() const { return firstNodeFrom(0); }

    // The table must have a bucket.
    int bucketNum(unsigned hash) const { return int(remainder(hash)); }
    int bucketNum(unsigned hash, int n) const { return int(hash % unsigned(n)); }

    int bucket_count() const { return buckets_.size(); }
    int bucket_size(int i) const;
    int max_bucket_size() const;
    static constexpr int max_bucket_count() { return 1610612741; }
    float load_factor() const; // 0 without buckets
    float max_load_factor() const { return maxLoadFactor_; }
    // Makes room for the elements at this load factor. What is not above 0 is ignored.
    void max_load_factor(float factor);
    // Makes room for n elements. Never shrinks. Nodes stay where they are.
    void rehash(int n);

    // How many nodes are taken from the heap at a time; only before the first insertion, see BlockAllocator.
    void setNumElementsInBlock(int n) { allocator_.setNumElementsInBlock(n); }
    // A raw node that is not in the table; and back, with key and value destroyed.
    HashNodeImpl * allocateNode() { return static_cast<HashNodeImpl *>(allocator_.alloc()); }
    void freeNode(HashNodeImpl * node) noexcept;

    // For tests: whether every node is in the bucket of its hash, equal keys stand together and counts agree.
    bool validate() const;

protected:
    explicit HashTableImpl(TypeUtil const * typeUtil);
    ~HashTableImpl();

    HashNodeImpl ** bucketArray() { return static_cast<HashNodeImpl **>(buckets_.data()); }
    HashNodeImpl * const * bucketArray() const { return static_cast<HashNodeImpl * const *>(buckets_.data()); }

    // Room for one element more.
    void growForOne() {
        if (count_ >= growAt_) [[unlikely]]
            growByOne();
    }
    // A constructed node becomes the head of the bucket of its hash, or goes behind another node, and is counted.
    void linkAtHead(HashNodeImpl * node, unsigned hash) noexcept {
        HashNodeImpl *& head = bucketArray()[remainder(hash)];
        node->hash = hash;
        node->next = head;
        head = node;
        ++count_;
    }
    void linkBehind(HashNodeImpl * node, HashNodeImpl * front) noexcept {
        node->hash = front->hash;
        node->next = front->next;
        front->next = node;
        ++count_;
    }
    // Behind the front, or without one at the head of the bucket.
    static void linkIn(HashTableImpl & table, HashNodeImpl * node, unsigned hash, HashNodeImpl * front) noexcept {
        if (front)
            table.linkBehind(node, front);
        else
            table.linkAtHead(node, hash);
    }
    // Takes a node out of its bucket, with key and value alive. False when it is not there.
    bool unlinkNode(HashNodeImpl * node) noexcept;
    // Replaces all nodes, for a copy of the other table: fill(table) links nodes from this table's allocator in the one
    // that it is given.
    template <typename Fill>
    void replaceNodes(HashTableImpl const & other, Fill fill) {
        // Elements without destructors own nothing, so that the other table cannot lie in one of them: their memory is
        // used again. Other elements go last, and are whole until then.
        if (!hasDestructors())
            clear();
        HashTableImpl copies(typeUtil_);
        struct TakeBack { // the copies when one fails, else the old nodes
            HashTableImpl & target;
            HashTableImpl & table;
            ~TakeBack() { target.takeBackNodes(table); }
        } const takeBack = {*this, copies};
        copies.makeRoomAs(*this, other);
        fill(copies);
        swapNodes(copies);
    }
    // Frees a node without destroying key and value.
    void freeRawNode(HashNodeImpl * node) noexcept { allocator_.free(node); }

    // hash % bucket count, by two multiplications with the reciprocal of the count (exact for all 32-bit numbers).
    unsigned remainder(unsigned hash) const {
        __extension__ using Wide = unsigned __int128;
        std::uint64_t const fraction = reciprocal_ * hash;
        return unsigned((Wide(fraction) * unsigned(buckets_.size())) >> 64);
    }

    VectorImpl buckets_; // of HashNodeImpl *
    TypeUtil const * typeUtil_;
    int count_ = 0;
    float maxLoadFactor_ = 1.0F;
    BlockAllocator allocator_;
    // Not to be seen from outside, and derived from the above. A division for every operation would take longer than
    // the rest of it, and so would the test for growth in floating point.
    std::uint64_t reciprocal_ = 0; // 2^64 / bucket count, rounded up
    int growAt_ = 0;               // below this count there is room for one more

private:
    friend struct HashNodeImpl;

    void const * keyPtrOfNode(HashNodeImpl const * node) const {
        return reinterpret_cast<unsigned char const *>(node) + typeUtil_->keyOffset;
    }
    void * keyPtrOfNode(HashNodeImpl * node) const { return dataAt(node, typeUtil_->keyOffset); }
    void const * valuePtrOfNode(HashNodeImpl const * node) const {
        return reinterpret_cast<unsigned char const *>(node) + typeUtil_->valueOffset;
    }
    void * valuePtrOfNode(HashNodeImpl * node) const { return dataAt(node, typeUtil_->valueOffset); }
    void * dataPtrOfNode(HashNodeImpl * node) const { return dataAt(node, typeUtil_->dataOffset); }
    static void * dataAt(HashNodeImpl * node, int offset) { return reinterpret_cast<unsigned char *>(node) + offset; }

    HashNodeImpl const * firstNodeFrom(int bucket) const {
        HashNodeImpl * const * const heads = bucketArray();
        constexpr int ahead = 16;
        for (int const n = buckets_.size(); bucket < n; ++bucket) {
            if (bucket + ahead < n)
                __builtin_prefetch(heads[bucket + ahead]); // the walk gets there soon
            if (heads[bucket])
                return heads[bucket];
        }
        return nullptr;
    }
    bool hasEqualKey(HashNodeImpl const * node, void const * key) const {
        return typeUtil_->equal(keyPtrOfNode(node), key);
    }
    enum class NoValue { construct, leaveRaw };
    HashNodeImpl * newNode(void const * key, void const * value, NoValue noValue);
    HashNodeImpl * findEqual(unsigned hash, void const * key) const;
    bool hasDestructors() const { return typeUtil_->destructKey || typeUtil_->destructValue; }
    void makeRoomAs(HashTableImpl const & former, HashTableImpl const & other);
    void freeNodes(HashTableImpl & table) noexcept;
    void takeBackNodes(HashTableImpl & table) noexcept;
    void swapNodes(HashTableImpl & other) noexcept;
    void growByOne();
    void setBucketCount(int n);
    void deriveLimits() noexcept;
};

} // namespace qv

#endif
