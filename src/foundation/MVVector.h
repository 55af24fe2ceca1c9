// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVLog.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <vector>

namespace morvanelab
{

/** A growable array whose reads never fail: out of range yields the default, or zero and a logged error.
    Indices and sizes are signed 32-bit numbers. No lock of its own. */
template <typename T>
class MVVector
{
    // One byte an entry for flags, so that every element is an object of its own.
    using Slot = std::conditional_t<std::is_same_v<T, bool>, unsigned char, T>;

public:
    MVVector() = default;
    MVVector (const MVVector&) = default;
    MVVector& operator= (const MVVector&) = default;
    MVVector (MVVector&&) noexcept = default;
    MVVector& operator= (MVVector&&) noexcept = default;
    virtual ~MVVector() = default;

    int size() const { return static_cast<int> (items.size()); }
    bool isEmpty() const { return items.empty(); }
    int capacity() const { return static_cast<int> (items.capacity()); }

    /** The element. Out of range: the default value if one is set, else a zero value and an "ERROR" line. */
    T itemAt (int index) const
    {
        if (index >= 0 && index < size())
            return static_cast<T> (items[static_cast<std::size_t> (index)]);

        if (hasDefault)
            return defaultValue;

        mvLogOutOfRange ("MVVector", typeid (T), std::is_class_v<T>, index, size());
        return T {};
    }

    /** Unchecked access for loops that have checked their bounds. */
    Slot& operator[] (int index) { return items[static_cast<std::size_t> (index)]; }
    const Slot& operator[] (int index) const { return items[static_cast<std::size_t> (index)]; }

    /** Stores at index, growing with the default value (zero if none is set). Negative indices are ignored.
        Values are taken by copy throughout, since they may live in this very array. */
    void setItem (int index, T value)
    {
        if (index < 0)
            return;
        if (index >= size())
        {
            growFor (index - size() + 1);
            items.resize (static_cast<std::size_t> (index) + 1, static_cast<Slot> (defaultValue));
        }
        items[static_cast<std::size_t> (index)] = std::move (value);
    }

    void add (T value)
    {
        growFor (1);
        items.push_back (std::move (value));
    }

    /** Inserts before index, which is taken into 0 to size(). */
    void insert (int index, T value)
    {
        growFor (1);
        items.insert (items.begin() + std::clamp (index, 0, size()), std::move (value));
    }

    /** Erases the element at index; out of range does nothing. */
    void removeAt (int index)
    {
        if (index >= 0 && index < size())
            items.erase (items.begin() + index);
    }

    /** Erases the first element equal to value. Returns whether there was one. */
    bool removeValue (const T& value)
    {
        const auto found = std::find (items.begin(), items.end(), static_cast<Slot> (value));
        if (found == items.end())
            return false;
        items.erase (found);
        return true;
    }

    /** New entries take the default value, or zero if none is set. */
    void resize (int count)
    {
        if (count > size())
            growFor (count - size());
        items.resize (static_cast<std::size_t> (std::max (0, count)), static_cast<Slot> (defaultValue));
    }

    void reserve (int count) { items.reserve (static_cast<std::size_t> (std::max (0, count))); }
    void clear() { items.clear(); }

    /** From now on reads past the end yield this value, silently. */
    void setDefault (const T& value)
    {
        hasDefault = true;
        defaultValue = value;
    }

    auto begin() { return items.begin(); }
    auto end() { return items.end(); }
    auto begin() const { return items.begin(); }
    auto end() const { return items.end(); }
    Slot* data() { return items.data(); }
    const Slot* data() const { return items.data(); }

private:
    /** Grows by half, or to what is asked for. */
    void growFor (int count)
    {
        const std::size_t used = items.size();
        const std::size_t more = static_cast<std::size_t> (count);

        if (items.capacity() - used >= more)
            return;
        if (std::min<std::size_t> (items.max_size(), std::numeric_limits<int>::max()) - used < more)
            throw std::length_error ("vector<T> too long");

        items.reserve (std::max (items.capacity() + items.capacity() / 2, used + more));
    }

    std::vector<Slot> items;
    bool hasDefault = false;
    T defaultValue {};
};

} // namespace morvanelab
