#include "platform/RefCountManager.h"

#include <cxxabi.h>

#include <cstdio>
#include <cstdlib>

#include "platform/KSLogger.h"
#include "platform/KSRuntimeError.h"

RefCountManager& RefCountManager::getInstance() {
    // Never destroyed: safe pointers in static objects may let go after main().
    static RefCountManager* instance = new RefCountManager();
    return *instance;
}

ref_count* RefCountManager::acquire(const void* key, void* object, void (*deleter)(void*)) {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto it = m_records.find(key);
    if (it != m_records.end()) {
        ++it->second->count;
        return it->second;
    }
    ref_count* record = new ref_count;
    record->key = key;
    record->object = object;
    record->deleter = deleter;
    record->count = 1;
    m_records.emplace(key, record);
    return record;
}

void RefCountManager::inc_reference(ref_count* record, const void* key) {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (record != nullptr && record->key == key && !record->released.load(std::memory_order_relaxed)) {
            auto it = m_records.find(key);
            if (it != m_records.end() && it->second == record && record->count > 0) {
                ++record->count;
                return;
            }
        }
    }
    throw KSRuntimeError("not valid pointer in inc_reference ");
}

long RefCountManager::dec_reference(ref_count* record) {
    if (record == nullptr) return 0;
    void* object = nullptr;
    void (*deleter)(void*) = nullptr;
    long left;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        left = --record->count;
        if (left > 0) return left;
        if (!record->released.load(std::memory_order_relaxed)) {
            auto it = m_records.find(record->key);
            if (it != m_records.end() && it->second == record) m_records.erase(it);
            record->released.store(true, std::memory_order_release);
            object = record->object;
            deleter = record->deleter;
        }
    }
    // Outside the lock: the object's destructor may let go of safe pointers of its own.
    delete record;
    if (deleter != nullptr && object != nullptr) deleter(object);
    return left;
}

bool RefCountManager::detach(ref_count* record) {
    if (record == nullptr) return false;
    bool wasLive = false;
    bool freeRecord = false;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (!record->released.load(std::memory_order_relaxed)) {
            auto it = m_records.find(record->key);
            if (it != m_records.end() && it->second == record) m_records.erase(it);
            record->released.store(true, std::memory_order_release);
            wasLive = true;
        }
        freeRecord = --record->count <= 0;
    }
    if (freeRecord) delete record;
    return wasLive;
}

long RefCountManager::getCount(const void* key) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto it = m_records.find(key);
    return it == m_records.end() ? 0 : it->second->count;
}

std::size_t RefCountManager::size() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_records.size();
}

void safePointerReport(const char* mangledTypeName, const char* reason) {
    std::string name = mangledTypeName != nullptr ? mangledTypeName : "";
    int status = 0;
    char* demangled = abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status);
    if (status == 0 && demangled != nullptr) name = demangled;
    std::free(demangled);
    std::string text = "SafePointer Report:" + name + " " + reason;
    KSLogger::consolePrintf("%s\n", text.c_str());
    std::fflush(stdout);
    throw KSRuntimeError(text);
}
