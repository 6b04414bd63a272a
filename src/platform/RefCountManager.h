#pragma once
#include <atomic>
#include <cstddef>
#include <mutex>
#include <string>
#include <unordered_map>

// One shared reference count, kept by RefCountManager (never inside the object).
//
// `count` is the number of SafePointers holding this record. While the record
// is live (not released) it is also the object's reference count. After the
// manager released the record (RefCountManager::detach), the pointers still
// holding it are stale; the record itself lives on until the last of them lets
// go, so a stale pointer can always tell that it is stale.
struct ref_count {
    const void* key = nullptr;                 // the object's address as registered
    void* object = nullptr;                    // the pointer handed to the deleter
    void (*deleter)(void*) = nullptr;          // deletes the object with its original type
    long count = 0;                            // guarded by the manager's mutex
    std::atomic<bool> released{false};         // true once the manager dropped the count
};

// The process-wide, thread-safe table of reference counts behind SafePointer,
// keyed by the object's raw address: two safe pointers made from one raw pointer
// find the same record and so share one count. Every count change happens under
// one mutex; an object is deleted (outside the mutex) when the last owner of a
// live record lets go.
class RefCountManager {
public:
    static RefCountManager& getInstance();

    // One more owner of the object at `key`: the live record of `key` with its
    // count raised by one, or a new record with count 1 that will delete
    // `object` with `deleter`.
    ref_count* acquire(const void* key, void* object, void (*deleter)(void*));

    // One more owner through an existing record. The record must still be the
    // live record of `key`; otherwise throws KSRuntimeError with the message
    // "not valid pointer in inc_reference ".
    void inc_reference(ref_count* record, const void* key);

    // One owner fewer. When the last owner of a live record leaves, the record
    // is dropped and the object deleted; the last holder of a released record
    // only frees the record. Returns the owners left.
    long dec_reference(ref_count* record);

    // A holder lets go of a live record and takes the object out of counting:
    // the manager forgets the count without deleting the object, and every other
    // pointer still holding the record becomes stale. A record that was already
    // released is only let go of. True if the record was live.
    bool detach(ref_count* record);

    // The owners of the object at `key`; 0 when it has no live record.
    long getCount(const void* key) const;
    // The number of live records.
    std::size_t size() const;

    RefCountManager(const RefCountManager&) = delete;
    RefCountManager& operator=(const RefCountManager&) = delete;

private:
    RefCountManager() = default;
    ~RefCountManager() = default;

    mutable std::mutex m_mutex;
    std::unordered_map<const void*, ref_count*> m_records;
};

// Prints "SafePointer Report:<type name> <reason>" and throws KSRuntimeError
// with that text. `mangledTypeName` is a typeid name; it is demangled when the
// tool chain allows.
[[noreturn]] void safePointerReport(const char* mangledTypeName, const char* reason);
