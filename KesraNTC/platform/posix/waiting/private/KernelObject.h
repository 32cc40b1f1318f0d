#pragma once

#include "KesraNTC/platform/posix/Handles.h"

#include <atomic>

namespace Kesra
{

/// What a HANDLE points to. The handle is one reference; operations in progress may hold others.
class KernelObject
{
public:
    enum class Type : std::uint32_t { Event, File };

    explicit KernelObject(Type type) : ObjectType(type) {}
    KernelObject(const KernelObject&) = delete;
    KernelObject& operator=(const KernelObject&) = delete;

    Type GetType() const { return ObjectType; }
    void AddRef() { References.fetch_add(1, std::memory_order_relaxed); }
    void Release()
    {
        if (References.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete this;
    }

protected:
    virtual ~KernelObject() = default;

private:
    const Type ObjectType;
    std::atomic<std::uint32_t> References{1};
};

/// False for null, INVALID_HANDLE_VALUE and the pseudo handles below it, which no object stands behind.
inline bool IsObjectHandle(HANDLE handle)
{
    const auto value = reinterpret_cast<std::uintptr_t>(handle);
    return value != 0 && value < ~std::uintptr_t{15};
}

/// The object behind a handle if it is a `Object` (which names its Type as `Object::ObjectKind`); otherwise
/// null.
template <typename Object> Object* FromHandle(HANDLE handle)
{
    if (!IsObjectHandle(handle))
        return nullptr;
    auto* object = static_cast<KernelObject*>(handle);
    return object->GetType() == Object::ObjectKind ? static_cast<Object*>(object) : nullptr;
}

/// The handle of an object; the conversion goes through the base, as FromHandle expects.
inline HANDLE ToHandle(KernelObject* object)
{
    return object;
}

} // namespace Kesra
