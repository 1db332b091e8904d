#include "Base/Containers/qvHashTableImpl.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "Base/Containers/Internal/Storage.h"

namespace qv {

namespace {

using Node = HashTableImpl::HashNodeImpl;

constexpr int elementsInBlock = 10;

constexpr int primes[] = {7,         13,        29,        53,        97,        193,      389,      769,
                          1543,      3079,      6151,      12289,     24593,     49157,    98317,    196613,
                          393241,    786433,    1572869,   3145739,   6291469,   12582917, 25165843, 50331653,
                          100663319, 201326611, 402653189, 805306457, 1610612741};
static_assert(std::size(primes) == 29 && primes[28] == HashTableImpl::max_bucket_count());

VectorImpl::TypeUtil const bucketType = {nullptr, nullptr, nullptr, nullptr, nullptr, sizeof(Node *)};

void clearBuckets(void * p, int n) { std::fill_n(static_cast<Node **>(p), n, nullptr); }

} // namespace

HashTableImpl::HashTableImpl(TypeUtil const * typeUtil)
    : buckets_(&bucketType), typeUtil_(typeUtil),
      allocator_(unsigned(typeUtil->nodeSize), elementsInBlock, unsigned(typeUtil->alignment)) {}

HashTableImpl::~HashTableImpl() {
    // The allocator takes back all memory at once; the walk is for what needs to be destroyed.
    if (hasDestructors())
        clear();
}

// Search

// In the chain of the hash, whether or not the stored hashes agree.
HashTableImpl::HashNodeImpl * HashTableImpl::findEqual(unsigned hash, void const * key) const {
    HashNodeImpl * node = bucketArray()[remainder(hash)];
    while (node && !hasEqualKey(node, key))
        node = node->next;
    return node;
}

HashTableImpl::HashNodeImpl const * HashTableImpl::findNode(unsigned hash, void const * key) const {
    if (buckets_.size() == 0)
        return nullptr;
    HashNodeImpl const * node = bucketArray()[remainder(hash)];
    while (node && !(node->hash == hash && hasEqualKey(node, key)))
        node = node->next;
    return node;
}

int HashTableImpl::count(unsigned hash, void const * key) const {
    int n = 0;
    for (HashNodeImpl const * node = findNode(hash, key); node; node = node->next) {
        if (node->hash == hash && hasEqualKey(node, key))
            ++n;
    }
    return n;
}

// Insertion

HashTableImpl::HashNodeImpl * HashTableImpl::newNode(void const * key, void const * value, NoValue noValue) {
    HashNodeImpl * const node = allocateNode();
    detail::Rollback freeAgain([&] { freeRawNode(node); });
    typeUtil_->copyKey(keyPtrOfNode(node), key);
    detail::Rollback destructAgain([&] {
        if (typeUtil_->destructKey)
            typeUtil_->destructKey(keyPtrOfNode(node));
    });
    if (value && typeUtil_->hasValue)
        typeUtil_->copyValue(valuePtrOfNode(node), value);
    else if (!value && noValue == NoValue::construct && typeUtil_->constructValue)
        typeUtil_->constructValue(valuePtrOfNode(node));
    destructAgain.release();
    freeAgain.release();
    return node;
}

HashTableImpl::HashNodeImpl * HashTableImpl::get(unsigned hash, void const * key) {
    if (HashNodeImpl * const node = findNode(hash, key))
        return node;
    // The key may lie in this table: nodes stay where they are.
    rehash(detail::addCounts(count_, 1));
    HashNodeImpl * const node = newNode(key, nullptr, NoValue::construct);
    linkAtHead(node, hash);
    return node;
}

HashTableImpl::HashNodeImpl * HashTableImpl::insert_unique_noresize(unsigned hash, void const * key,
                                                                    void const * value) {
    if (HashNodeImpl * const node = findEqual(hash, key))
        return node;
    HashNodeImpl * const node = newNode(key, value, NoValue::leaveRaw);
    linkAtHead(node, hash);
    return node;
}

HashTableImpl::HashNodeImpl * HashTableImpl::insert_non_unique_noresize(unsigned hash, void const * key,
                                                                        void const * value) {
    HashNodeImpl * const front = findEqual(hash, key);
    HashNodeImpl * const node = newNode(key, value, NoValue::leaveRaw);
    linkIn(*this, node, hash, front);
    return node;
}

// Removal

bool HashTableImpl::unlinkNode(HashNodeImpl * node) noexcept {
    if (buckets_.size() == 0)
        return false;
    for (HashNodeImpl ** link = bucketArray() + remainder(node->hash); *link; link = &(*link)->next) {
        if (*link == node) {
            *link = node->next;
            --count_;
            return true;
        }
    }
    return false;
}

void HashTableImpl::freeNode(HashNodeImpl * node) noexcept {
    if (typeUtil_->destructKey)
        typeUtil_->destructKey(keyPtrOfNode(node));
    if (typeUtil_->destructValue)
        typeUtil_->destructValue(valuePtrOfNode(node));
    allocator_.free(node);
}

void HashTableImpl::eraseNode(HashNodeImpl * node) noexcept {
    if (node && unlinkNode(node))
        freeNode(node);
}

int HashTableImpl::eraseKey(unsigned hash, void const * key) {
    if (buckets_.size() == 0)
        return 0;
    // What matches gathers in a chain of its own first, since the key may be in one of the nodes.
    HashNodeImpl * matches = nullptr;
    int n = 0;
    HashNodeImpl ** const bucket = bucketArray() + remainder(hash);
    try {
        for (HashNodeImpl ** link = bucket; *link;) {
            HashNodeImpl * const node = *link;
            if (node->hash == hash && hasEqualKey(node, key)) {
                *link = node->next;
                node->next = std::exchange(matches, node);
                ++n;
            } else {
                link = &node->next;
            }
        }
    } catch (...) {
        while (matches) {
            HashNodeImpl * const node = std::exchange(matches, matches->next);
            node->next = std::exchange(*bucket, node);
        }
        throw;
    }
    count_ -= n;
    while (matches)
        freeNode(std::exchange(matches, matches->next));
    return n;
}

void HashTableImpl::clear() noexcept {
    if (hasDestructors())
        freeNodes(*this);
    else
        allocator_.freeAll();
    clearBuckets(buckets_.data(), buckets_.size());
    count_ = 0;
}

// Gives the nodes of a table, which keeps pointing at them, back to this one's allocator.
void HashTableImpl::freeNodes(HashTableImpl & table) noexcept {
    for (int i = 0; table.count_ > 0 && i < table.buckets_.size(); ++i) {
        for (HashNodeImpl * node = table.bucketArray()[i]; node;)
            freeNode(std::exchange(node, node->next));
    }
}

// The whole table

// For the elements of the other table, with no less buckets than the former one's.
void HashTableImpl::makeRoomAs(HashTableImpl const & former, HashTableImpl const & other) {
    maxLoadFactor_ = other.maxLoadFactor_;
    if (former.bucket_count() > 0)
        setBucketCount(former.bucket_count());
    rehash(other.count_);
}

void HashTableImpl::takeBackNodes(HashTableImpl & table) noexcept {
    freeNodes(table);
    table.buckets_.clear();
    table.count_ = 0;
}

void HashTableImpl::copy(HashTableImpl const * other) {
    if (this == other)
        return;
    replaceNodes(*other, [&](HashTableImpl & table) {
        for (HashNodeImpl const * node = other->firstNode(); node; node = node->nextItem(other)) {
            void const * const key = other->keyPtrOfNode(node);
            HashNodeImpl * const front = table.findEqual(node->hash, key);
            HashNodeImpl * const copied =
                newNode(key, typeUtil_->hasValue ? other->valuePtrOfNode(node) : nullptr, NoValue::leaveRaw);
            linkIn(table, copied, node->hash, front);
        }
    });
}

void HashTableImpl::swap(HashTableImpl & other) noexcept {
    swapNodes(other);
    allocator_.swap(other.allocator_);
}

void HashTableImpl::swapNodes(HashTableImpl & other) noexcept {
    buckets_.swap(other.buckets_);
    std::swap(count_, other.count_);
    std::swap(maxLoadFactor_, other.maxLoadFactor_);
    std::swap(reciprocal_, other.reciprocal_);
    std::swap(growAt_, other.growAt_);
}

// Buckets

int HashTableImpl::bucket_size(int i) const {
    int n = 0;
    for (HashNodeImpl const * node = bucketArray()[i]; node; node = node->next)
        ++n;
    return n;
}

int HashTableImpl::max_bucket_size() const {
    int longest = 0;
    for (int i = 0; i < buckets_.size(); ++i)
        longest = std::max(longest, bucket_size(i));
    return longest;
}

float HashTableImpl::load_factor() const {
    return buckets_.size() ? static_cast<float>(count_) / static_cast<float>(buckets_.size()) : 0;
}

void HashTableImpl::max_load_factor(float factor) {
    if (!(factor > 0))
        return;
    maxLoadFactor_ = factor;
    deriveLimits();
    rehash(count_);
}

void HashTableImpl::rehash(int n) {
    if (n <= 0)
        return;
    double const exact = double(n) / double(maxLoadFactor_);
    int needed = exact < double(max_bucket_count()) ? int(exact) : max_bucket_count();
    // A load factor above 1 can ask for no bucket at all, but an element has to hang somewhere.
    if (buckets_.size() == 0 && needed == 0)
        needed = 1;
    if (needed <= buckets_.size())
        return;
    int const size = *std::lower_bound(std::begin(primes), std::end(primes) - 1, needed);
    if (size > buckets_.size())
        setBucketCount(size);
}

void HashTableImpl::growByOne() { rehash(detail::addCounts(count_, 1)); }

void HashTableImpl::setBucketCount(int n) {
    VectorImpl buckets(n, &clearBuckets, &bucketType);
    auto ** const heads = static_cast<HashNodeImpl **>(buckets.data());
    for (int i = 0; i < buckets_.size(); ++i) {
        for (HashNodeImpl * node = bucketArray()[i]; node;) {
            HashNodeImpl * const next = node->next;
            HashNodeImpl *& head = heads[node->hash % unsigned(n)];
            node->next = head;
            head = node;
            node = next;
        }
    }
    buckets_.swap(buckets);
    deriveLimits();
}

void HashTableImpl::deriveLimits() noexcept {
    unsigned const n = unsigned(buckets_.size());
    reciprocal_ = n ? std::numeric_limits<std::uint64_t>::max() / n + 1 : 0;
    double const room = n ? double(n) * double(maxLoadFactor_) : 0; // the factor may be infinite
    growAt_ = room < double(std::numeric_limits<int>::max()) ? int(room) : std::numeric_limits<int>::max();
}

bool HashTableImpl::validate() const {
    int nodes = 0;
    for (int i = 0; i < buckets_.size(); ++i) {
        for (HashNodeImpl const * node = bucketArray()[i]; node; node = node->next) {
            if (int(node->hash % unsigned(buckets_.size())) != i || ++nodes > count_)
                return false;
            if (!typeUtil_->equal || !node->next || hasEqualKey(node, keyPtrOfNode(node->next)))
                continue;
            // The run of equal keys ends here: none of them comes again.
            for (HashNodeImpl const * later = node->next; later; later = later->next) {
                if (hasEqualKey(later, keyPtrOfNode(node)))
                    return false;
            }
        }
    }
    return nodes == count_ && buckets_.validate() && allocator_.validate() && allocator_.numAllocated() == count_;
}

} // namespace qv
