// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <new>
#include <utility>

namespace morvanelab
{

/** A doubly linked list that keeps spent nodes on a stack of its own: once it has reached its largest size,
    adding and removing touch no heap. The count is atomic, so that a reader may look before it takes the
    owner's lock; every structural change belongs under that lock. */
template <typename T>
class MVList
{
public:
    struct Node
    {
        Node* previous = nullptr;
        Node* next = nullptr;
        T value {};
    };

    MVList() = default;
    MVList (const MVList& other) { copyFrom (other); }
    MVList& operator= (const MVList& other)
    {
        if (this != &other)
        {
            clear();
            copyFrom (other);
        }
        return *this;
    }

    virtual ~MVList()
    {
        deleteChain (head);
        deleteChain (freeNodes);
    }

    int count() const { return itemCount.load (std::memory_order_acquire); }
    /** Nodes taken from the heap so far, in use or spent. */
    int allocatedNodes() const { return allocated.load (std::memory_order_relaxed); }

    /** The adds return false only if no node could be had. */
    bool addHead (const T& value)
    {
        Node* const node = takeNode (value);
        if (node == nullptr)
            return false;
        link (node, nullptr, head);
        return true;
    }

    bool addTail (const T& value)
    {
        Node* const node = takeNode (value);
        if (node == nullptr)
            return false;
        link (node, tail, nullptr);
        return true;
    }

    /** Inserts before the item at index; an index equal to count() adds at the tail, any other fails. */
    bool insertAt (int index, const T& value)
    {
        if (index < 0 || index > count())
            return false;
        if (index == count())
            return addTail (value);

        Node* const behind = nodeAt (index);
        Node* const node = takeNode (value);
        if (node == nullptr)
            return false;
        link (node, behind->previous, behind);
        return true;
    }

    /** Removes the item at index; returns whether there was one, and its value in removed if given. */
    bool removeAt (int index, T* removed = nullptr)
    {
        if (! takeCount())
            return false;

        if (index < 0 || index > count())
        {
            itemCount.fetch_add (1);
            return false;
        }

        unlink (nodeAt (index), removed);
        return true;
    }

    bool popTail (T& value)
    {
        if (! takeCount())
            return false;
        unlink (tail, &value);
        return true;
    }

    bool popHead (T& value)
    {
        if (! takeCount())
            return false;
        unlink (head, &value);
        return true;
    }

    /** Removes a node found by walking from firstNode(). */
    void removeNode (Node* node)
    {
        if (takeCount())
            unlink (node, nullptr);
    }

    void clear()
    {
        T discarded {};
        while (popTail (discarded))
            discarded = T {};
    }

    /** The item at index, walking from the head; null out of range. */
    T* itemAt (int index)
    {
        Node* const node = index >= 0 && index < count() ? nodeAt (index) : nullptr;
        return node != nullptr ? &node->value : nullptr;
    }

    Node* firstNode() const { return head; }
    Node* lastNode() const { return tail; }

private:
    Node* takeNode (const T& value)
    {
        Node* node = freeNodes;

        if (node != nullptr)
        {
            freeNodes = node->next;
        }
        else
        {
            node = new (std::nothrow) Node;
            if (node == nullptr)
                return nullptr;
            allocated.fetch_add (1, std::memory_order_relaxed);
        }

        node->value = value;
        return node;
    }

    void link (Node* node, Node* before, Node* behind)
    {
        node->previous = before;
        node->next = behind;
        (before != nullptr ? before->next : head) = node;
        (behind != nullptr ? behind->previous : tail) = node;
        itemCount.fetch_add (1, std::memory_order_acq_rel);
    }

    /** Takes one off the count first; a negative result means empty and is undone. */
    bool takeCount()
    {
        if (itemCount.fetch_sub (1, std::memory_order_acq_rel) >= 1)
            return true;
        itemCount.fetch_add (1, std::memory_order_acq_rel);
        return false;
    }

    void unlink (Node* node, T* removed)
    {
        (node->previous != nullptr ? node->previous->next : head) = node->next;
        (node->next != nullptr ? node->next->previous : tail) = node->previous;
        if (removed != nullptr)
            *removed = std::move (node->value);
        node->value = T {};
        node->previous = nullptr;
        node->next = freeNodes;
        freeNodes = node;
    }

    Node* nodeAt (int index) const
    {
        Node* node = head;
        while (index-- > 0 && node != nullptr)
            node = node->next;
        return node;
    }

    void copyFrom (const MVList& other)
    {
        for (Node* node = other.head; node != nullptr; node = node->next)
            addTail (node->value);
    }

    static void deleteChain (Node* node)
    {
        while (node != nullptr)
            delete std::exchange (node, node->next);
    }

    Node* head = nullptr;
    Node* tail = nullptr;
    Node* freeNodes = nullptr;
    std::atomic<int> itemCount { 0 };
    std::atomic<int> allocated { 0 };
};

} // namespace morvanelab
