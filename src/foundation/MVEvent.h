// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVObject.h"
#include "foundation/MVSmartPtr.h"

#include <array>
#include <cstdint>

namespace morvanelab
{

/** Who consumes a queue. */
enum MVThreadCategory : std::uint32_t
{
    threadCategoryDefault = 1, ///< of a fresh event; no queue is made for it
    threadCategoryRender = 4,  ///< the audio thread, at the head of each block
    threadCategoryEvent = 5    ///< the MVEventThread
};

/** How an event enters its queue. */
enum MVQueueMode : std::uint32_t
{
    queueModeCoalesce = 0,      ///< replaces a queued event of the same target and type
    queueModeOrdered = 2,       ///< served behind the last queued event of at least this mode
    queueModeOrderedHigher = 3, ///< the same, one higher
    queueModeExclusive = 4      ///< drives out everything queued but other exclusive events
};

/** A pooled record that travels to a handler. The poster fills it between allocateEvent and postEvents and sets
    every field that it relies on, since a pooled event may hold values of its last use (only the completion is
    always clear). The handler must neither delete it nor keep it. */
class MVEvent : public MVObject
{
public:
    /** Called by a handler when the work of the event is over, on the handler's thread. The message is null
        unless there is something to tell the user. */
    using Completion = void (*) (void* contextA, void* contextB, int result, const char* message);

    MVEvent() = default;

    const char* className() const override { return "MVEvent"; }
    /** All fields to those of a fresh event; releases both objects and forgets the completion. */
    void reset() override;

    virtual void setType (std::uint32_t value) { type = value; }
    virtual void setThreadCategory (MVThreadCategory value) { threadCategory = value; }
    virtual void setQueueMode (std::uint32_t value) { queueMode = value; }
    /** The id of the receiving handler, or 0 for all. */
    virtual void setTargetId (std::uint64_t value) { targetId = value; }
    /** Indices outside are ignored by the setters and give 0 from the getters: 3 pointers, 8 integers, 4 doubles. */
    virtual void setPointerArg (int index, void* value) { setArg (pointerArgs, index, value); }
    virtual void setIntArg (int index, std::int64_t value) { setArg (intArgs, index, value); }
    virtual void setIntArg (int index, std::int32_t value) { setArg (intArgs, index, std::int64_t { value }); }
    virtual void setDoubleArg (int index, double value) { setArg (doubleArgs, index, value); }

    virtual std::uint32_t getType() const { return type; }
    virtual std::uint32_t getQueueMode() const { return queueMode; }
    virtual MVThreadCategory getThreadCategory() const { return threadCategory; }
    virtual std::uint64_t getTargetId() const { return targetId; }
    virtual void* getPointerArg (int index) const { return getArg (pointerArgs, index); }
    virtual std::int64_t getIntArg (int index) const { return getArg (intArgs, index); }
    virtual double getDoubleArg (int index) const { return getArg (doubleArgs, index); }

    /** Takes over the caller's reference: the argument comes back null. */
    template <typename T>
    void setObjectA (MVSmartPtr<T>& object)
    {
        takeOver (objectA, object);
    }
    template <typename T>
    void setObjectB (MVSmartPtr<T>& object)
    {
        takeOver (objectB, object);
    }
    void clearObjects();
    const MVSmartPtr<MVObject>& getObjectA() const { return objectA; }
    const MVSmartPtr<MVObject>& getObjectB() const { return objectB; }

    /** The completion is a field of its own, apart from the pointer arguments. Null for none. */
    void setCompletion (Completion function, void* contextA, void* contextB);
    bool hasCompletion() const { return completion != nullptr; }
    /** Calls the completion, if any, and forgets it: it is told once. */
    void complete (int result, const char* message = nullptr);

private:
    template <typename T, std::size_t size>
    static void setArg (std::array<T, size>& args, int index, T value)
    {
        if (index >= 0 && index < static_cast<int> (size))
            args[static_cast<std::size_t> (index)] = value;
    }

    template <typename T, std::size_t size>
    static T getArg (const std::array<T, size>& args, int index)
    {
        return index >= 0 && index < static_cast<int> (size) ? args[static_cast<std::size_t> (index)] : T {};
    }

    template <typename T>
    static void takeOver (MVSmartPtr<MVObject>& field, MVSmartPtr<T>& object)
    {
        MVSmartPtr<MVObject> taken;
        taken = MVSmartPtr<MVObject> (object);
        object.clear();
        field = std::move (taken);
    }

    std::uint32_t type = 0;
    MVThreadCategory threadCategory = threadCategoryDefault;
    std::uint32_t queueMode = queueModeCoalesce;
    std::uint64_t targetId = 0;
    std::array<void*, 3> pointerArgs {};
    std::array<std::int64_t, 8> intArgs {};
    std::array<double, 4> doubleArgs {};
    MVSmartPtr<MVObject> objectA;
    MVSmartPtr<MVObject> objectB;
    Completion completion = nullptr;
    void* completionContextA = nullptr;
    void* completionContextB = nullptr;
};

} // namespace morvanelab
