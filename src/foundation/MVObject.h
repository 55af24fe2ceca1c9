// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>

namespace morvanelab
{

/** Root of most classes: a unique identity, a run-time name and the usual life-cycle operations. */
class MVObject
{
public:
    MVObject();
    /** A copy is an object of its own: it takes a fresh identity and only the enabled flag of the other. */
    MVObject (const MVObject& other);
    MVObject& operator= (const MVObject&) = delete;
    virtual ~MVObject() = default;

    /** A new heap copy, or null where the class has none. The caller owns it. */
    virtual MVObject* clone() const { return nullptr; }
    /** The class's name without namespace, or null. */
    virtual const char* className() const { return nullptr; }
    virtual bool isClassNamed (const char* text) const;
    virtual void reset() {}
    /** 32-bit class code; 0 where the class has none. */
    virtual std::uint32_t typeId() const { return 0; }
    virtual std::uint64_t getId() const { return objectId; }
    virtual void setId (std::uint64_t value) { objectId = value; }
    /** Takes over the other's identity and enabled flag. */
    virtual void copyFrom (const MVObject& other);
    /** The object's active flag. What it gates is up to the class: signal objects prepare their run-time state
        when it is set, managers open their gates. */
    virtual void setActive (bool flag) { enabled = flag; }
    virtual bool isActive() const { return enabled; }
    /** The same flag, under the name that fits a manager. */
    void setEnabled (bool flag) { setActive (flag); }
    bool isEnabled() const { return isActive(); }

protected:
    std::uint64_t objectId;
    /** Read by threads other than the one that sets it. */
    std::atomic<bool> enabled { false };
};

} // namespace morvanelab
