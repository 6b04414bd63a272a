#pragma once
#include <cstddef>
#include <functional>
#include <type_traits>
#include <typeinfo>
#include <utility>

#include "platform/KSRuntimeError.h"
#include "platform/RefCountManager.h"

// SafePointer<T>: the platform's reference-counted pointer.
//
// The count is not stored in the object: it lives in the process-wide
// RefCountManager, keyed by the object's address, so two safe pointers made
// from one raw pointer share one count (also when made separately, even with
// different pointer types). The key is the object's most-derived address
// (dynamic_cast<const void*>) for polymorphic types and the plain address
// otherwise; a non-polymorphic object reached through a base class at a
// different address (multiple inheritance) therefore gets a separate count and
// must not be wrapped that way. When the count drops to 0 the object is deleted
// with the type it was first wrapped as. Counting is thread-safe; a single
// SafePointer object must not be changed by one thread while another uses it.
//
// Misuse prints "SafePointer Report:<type name> <reason>" and throws
// KSRuntimeError with that text:
//   "Construct from NULL original pointer"  constructing from a null raw pointer
//   "Construct from NULL <T>pointer"        copy-constructing from an empty pointer
//   "Assigned NULL <T>pointer"              assigning from an empty pointer
//   "Use NULL pointer ->"                   operator-> or operator* on an empty pointer
//   "Already destructed 1"                  operator-> or operator* on a stale pointer
//   "Already destructed 2"                  copy-constructing from a stale pointer
//   "Already destructed 3"                  assigning from a stale pointer
// A pointer is stale when the manager has released the count it holds while it
// still holds it: another pointer sharing the count called release(), which
// takes the object out of counting (the object may well be destroyed by its new
// owner since). A stale pointer can still be reset, destroyed, moved, compared
// and asked isValid(); none of that touches the object.
// A count that does not belong to the pointer any more when it is raised makes
// the manager throw KSRuntimeError("not valid pointer in inc_reference ") directly
// (a race between a copy and a release() in another thread).
//
// Moving from an empty pointer is allowed (so an empty pointer can be returned
// by value); move-assigning from an empty or stale pointer throws like a copy
// assignment.
template <class T>
class SafePointer {
public:
    using element_type = T;

    SafePointer() noexcept = default;

    explicit SafePointer(T* p) {
        if (p == nullptr) report("Construct from NULL original pointer");
        m_pRef = RefCountManager::getInstance().acquire(keyOf(p), const_cast<void*>(static_cast<const void*>(p)),
                                                        &deleteAs);
        m_p = p;
    }

    SafePointer(const SafePointer& other) { copyFrom(other); }

    template <class U, class = std::enable_if_t<std::is_convertible<U*, T*>::value>>
    SafePointer(const SafePointer<U>& other) {
        copyFrom(other);
    }

    SafePointer(SafePointer&& other) noexcept : m_p(other.m_p), m_pRef(other.m_pRef) {
        other.m_p = nullptr;
        other.m_pRef = nullptr;
    }

    template <class U, class = std::enable_if_t<std::is_convertible<U*, T*>::value>>
    SafePointer(SafePointer<U>&& other) noexcept : m_p(other.m_p), m_pRef(other.m_pRef) {
        other.m_p = nullptr;
        other.m_pRef = nullptr;
    }

    ~SafePointer() { reset(); }

    SafePointer& operator=(const SafePointer& other) { return assignFrom(other); }

    template <class U, class = std::enable_if_t<std::is_convertible<U*, T*>::value>>
    SafePointer& operator=(const SafePointer<U>& other) {
        return assignFrom(other);
    }

    SafePointer& operator=(SafePointer&& other) {
        if (&other == this) return *this;
        checkAssignSource(other);
        reset();
        m_p = other.m_p;
        m_pRef = other.m_pRef;
        other.m_p = nullptr;
        other.m_pRef = nullptr;
        return *this;
    }

    T* get() const noexcept { return m_p; }

    T* operator->() const {
        checkUse();
        return m_p;
    }
    T& operator*() const {
        checkUse();
        return *m_p;
    }

    bool isNull() const noexcept { return m_p == nullptr; }
    explicit operator bool() const noexcept { return m_p != nullptr; }
    // Not empty and the count not released.
    bool isValid() const noexcept {
        return m_pRef != nullptr && !m_pRef->released.load(std::memory_order_acquire);
    }
    // The shared count; 0 when empty or stale.
    long useCount() const {
        return isValid() ? RefCountManager::getInstance().getCount(m_pRef->key) : 0;
    }

    // Lets go of the object (deleting it if this was the last owner); the pointer becomes empty.
    void reset() noexcept {
        ref_count* r = m_pRef;
        m_p = nullptr;
        m_pRef = nullptr;
        if (r != nullptr) RefCountManager::getInstance().dec_reference(r);
    }
    // Lets go of the current object and takes `p` (reset(nullptr) only lets go).
    void reset(T* p) {
        if (p == nullptr) {
            reset();
            return;
        }
        SafePointer tmp(p);
        swap(tmp);
    }

    // Takes the object out of reference counting and hands it to the caller,
    // who now owns it. The pointer becomes empty; every other pointer that
    // shared the count becomes stale. Empty or stale pointers give nullptr.
    T* release() noexcept {
        ref_count* r = m_pRef;
        T* p = m_p;
        m_p = nullptr;
        m_pRef = nullptr;
        if (r == nullptr) return nullptr;
        return RefCountManager::getInstance().detach(r) ? p : nullptr;
    }

    void swap(SafePointer& other) noexcept {
        std::swap(m_p, other.m_p);
        std::swap(m_pRef, other.m_pRef);
    }

private:
    template <class U>
    friend class SafePointer;

    static const void* keyOf(T* p) {
        if constexpr (std::is_polymorphic<T>::value) {
            return dynamic_cast<const void*>(p);
        } else {
            return static_cast<const void*>(p);
        }
    }
    static void deleteAs(void* p) { delete static_cast<T*>(p); }

    [[noreturn]] static void report(const char* reason) { safePointerReport(typeid(T).name(), reason); }

    void checkUse() const {
        if (m_p == nullptr) report("Use NULL pointer ->");
        if (m_pRef == nullptr || m_pRef->released.load(std::memory_order_acquire)) report("Already destructed 1");
    }

    template <class U>
    void copyFrom(const SafePointer<U>& other) {
        if (other.m_p == nullptr) report("Construct from NULL <T>pointer");
        if (other.m_pRef == nullptr || other.m_pRef->released.load(std::memory_order_acquire))
            report("Already destructed 2");
        RefCountManager::getInstance().inc_reference(other.m_pRef, other.m_pRef->key);
        m_p = other.m_p;
        m_pRef = other.m_pRef;
    }

    template <class U>
    void checkAssignSource(const SafePointer<U>& other) const {
        if (other.m_p == nullptr) report("Assigned NULL <T>pointer");
        if (other.m_pRef == nullptr || other.m_pRef->released.load(std::memory_order_acquire))
            report("Already destructed 3");
    }

    template <class U>
    SafePointer& assignFrom(const SafePointer<U>& other) {
        checkAssignSource(other);
        if (other.m_pRef == m_pRef) {
            m_p = other.m_p;
            return *this;
        }
        RefCountManager::getInstance().inc_reference(other.m_pRef, other.m_pRef->key);
        ref_count* old = m_pRef;
        m_p = other.m_p;
        m_pRef = other.m_pRef;
        if (old != nullptr) RefCountManager::getInstance().dec_reference(old);
        return *this;
    }

    T* m_p = nullptr;
    ref_count* m_pRef = nullptr;
};

template <class T, class U>
bool operator==(const SafePointer<T>& a, const SafePointer<U>& b) noexcept {
    return a.get() == b.get();
}
template <class T, class U>
bool operator!=(const SafePointer<T>& a, const SafePointer<U>& b) noexcept {
    return a.get() != b.get();
}
template <class T>
bool operator==(const SafePointer<T>& a, std::nullptr_t) noexcept {
    return a.isNull();
}
template <class T>
bool operator==(std::nullptr_t, const SafePointer<T>& a) noexcept {
    return a.isNull();
}
template <class T>
bool operator!=(const SafePointer<T>& a, std::nullptr_t) noexcept {
    return !a.isNull();
}
template <class T>
bool operator!=(std::nullptr_t, const SafePointer<T>& a) noexcept {
    return !a.isNull();
}
// Ordering by address, so safe pointers can be keys of ordered containers.
template <class T>
bool operator<(const SafePointer<T>& a, const SafePointer<T>& b) noexcept {
    return std::less<T*>()(a.get(), b.get());
}
