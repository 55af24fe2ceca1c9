// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>
#include <type_traits>
#include <utility>

namespace morvanelab
{

/** Shared ownership through a reference count on the heap: two words, object and count.

    Two pointers that hold one object may be released on two threads at once. Copy construction is a plain
    load and store of the count and belongs to the owning thread; assignment and release are atomic.
    Two pointers must never be made from one raw pointer. T needs a virtual destructor (or be final). */
template <typename T>
class MVSmartPtr
{
public:
    MVSmartPtr() = default;

    explicit MVSmartPtr (T* raw) : object (raw), references (raw != nullptr ? new Count (1) : nullptr) {}

    MVSmartPtr (const MVSmartPtr& other) : object (other.object), references (other.references) { retainPlain(); }

    template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    MVSmartPtr (const MVSmartPtr<U>& other) : object (other.object), references (other.references)
    {
        retainPlain();
    }

    MVSmartPtr (MVSmartPtr&& other) noexcept
        : object (std::exchange (other.object, nullptr)), references (std::exchange (other.references, nullptr))
    {
    }

    ~MVSmartPtr() { clear(); }

    /** Does nothing if both already hold the same object. */
    MVSmartPtr& operator= (const MVSmartPtr& other)
    {
        if (object == other.object)
            return *this;

        T* const newObject = other.object;
        Count* const newReferences = other.references;

        // Retained before the release: releasing may destroy the owner of other.
        if (newReferences != nullptr)
            newReferences->fetch_add (1, std::memory_order_relaxed);

        clear();
        object = newObject;
        references = newReferences;
        return *this;
    }

    MVSmartPtr& operator= (MVSmartPtr&& other) noexcept
    {
        if (this != &other)
        {
            MVSmartPtr released (std::move (*this));
            object = std::exchange (other.object, nullptr);
            references = std::exchange (other.references, nullptr);
        }

        return *this;
    }

    /** Gives up this reference; the last one destroys the object. */
    void clear()
    {
        T* const oldObject = std::exchange (object, nullptr);
        Count* const oldReferences = std::exchange (references, nullptr);

        if (oldReferences != nullptr && oldReferences->fetch_sub (1, std::memory_order_acq_rel) == 1)
        {
            delete oldObject;
            delete oldReferences;
        }
    }

    T* get() const { return object; }
    T* operator->() const { return object; }
    T& operator*() const { return *object; }
    explicit operator bool() const { return object != nullptr; }

    bool operator== (std::nullptr_t) const { return object == nullptr; }
    template <typename U>
    bool operator== (const MVSmartPtr<U>& other) const
    {
        return object == other.get();
    }

    /** References held now; for tests and diagnostics. */
    std::uint32_t referenceCount() const { return references != nullptr ? references->load() : 0; }

    /** The same object seen as a U, or null if it is none. */
    template <typename U>
    MVSmartPtr<U> castTo() const
    {
        MVSmartPtr<U> result;

        if (U* const cast = dynamic_cast<U*> (object); cast != nullptr)
        {
            result.object = cast;
            result.references = references;
            result.retainPlain();
        }

        return result;
    }

private:
    template <typename>
    friend class MVSmartPtr;

    using Count = std::atomic<std::uint32_t>;

    void retainPlain()
    {
        if (references != nullptr)
            references->store (references->load (std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    }

    T* object = nullptr;
    Count* references = nullptr;
};

template <typename T, typename... Args>
MVSmartPtr<T> makeSmart (Args&&... args)
{
    return MVSmartPtr<T> (new T (std::forward<Args> (args)...));
}

} // namespace morvanelab
