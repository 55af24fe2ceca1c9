// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <iterator>
#include <map>
#include <stdexcept>

namespace morvanelab
{

/** An ordered map over a balanced tree; keys ascend under K's ordering. No lock of its own. */
template <typename K, typename V>
class MVMap
{
public:
    virtual ~MVMap() = default;

    int count() const { return static_cast<int> (items.size()); }

    /** The value under key, or null. */
    V* find (const K& key)
    {
        const auto found = items.find (key);
        return found != items.end() ? &found->second : nullptr;
    }

    const V* find (const K& key) const
    {
        const auto found = items.find (key);
        return found != items.end() ? &found->second : nullptr;
    }

    /** The value under key, default-constructed if it was not there. */
    V& insert (const K& key)
    {
        checkRoom();
        return items[key];
    }

    void insertOrReplace (const K& key, const V& value)
    {
        checkRoom();
        items.insert_or_assign (key, value);
    }

    bool remove (const K& key) { return items.erase (key) > 0; }
    void clear() { items.clear(); }

    /** Entry at index in key order, walking from the smallest key; null out of range. */
    V* valueAt (int index)
    {
        return index >= 0 && index < count() ? &std::next (items.begin(), index)->second : nullptr;
    }
    const K* keyAt (int index) const
    {
        return index >= 0 && index < count() ? &std::next (items.begin(), index)->first : nullptr;
    }

    auto begin() { return items.begin(); }
    auto end() { return items.end(); }
    auto begin() const { return items.begin(); }
    auto end() const { return items.end(); }

private:
    void checkRoom() const
    {
        if (items.size() >= items.max_size())
            throw std::length_error ("map/set<T> too long");
    }

    std::map<K, V> items;
};

} // namespace morvanelab
