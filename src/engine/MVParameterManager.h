// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/MVControlIdList.h"
#include "foundation/MVEventHandler.h"
#include "foundation/MVRiffPacker.h"
#include "foundation/MVSmartPtr.h"

#include <array>
#include <atomic>
#include <cstdint>

namespace morvanelab
{

class MVControlManager;
class MVEventManager;

/** A flat bank of 32 parameters, each driving any number of control values: what host automation and presets see.

    Every operation rejects a parameter index outside 0 to 31 quietly (13, or false).
    Threads: setValue and getValue on any thread, the audio thread included; they take no lock and allocate
    nothing. The mappings are changed by one thread at a time; a setValue that runs at that moment may miss a
    moving entry or meet it twice, no more. */
class MVParameterManager : public MVEventHandler
{
public:
    static constexpr int numParameters = 32;

    /** Neither is owned; eventManager may be null. */
    MVParameterManager (MVControlManager* controlManager, MVEventManager* eventManager);

    const char* className() const override { return "MVParameterManager"; }

    /** Sets all values to 0. Mappings stay, and no control value is touched. */
    void reset() override;
    /** No message is meant for this handler. */
    void handleThreadMsg (std::uint32_t message) override;

    /** Empties all mappings. Values stay. */
    virtual void clear();
    /** Replaces the mappings by those of a "pmgr" tree: 1, or 16 if the root is another, with nothing changed.
        A tree newer than 1.4.0, or without a version, leaves the mappings empty. Stored values are looked for
        under "pVal" while they are written as "pval": values therefore stay as they were. */
    virtual int loadRiff (const MVRiffPacker& riff);
    /** The mappings and values as a new "pmgr" tree. */
    virtual MVSmartPtr<MVRiffPacker> saveRiff() const;
    /** Writes value to every mapped control, in order, unless it equals the parameter's present value. 1 or 13. */
    virtual int setValue (int parameter, double value);
    /** Writes the last value set to out. 1 or 13. */
    virtual int getValue (int parameter, double& out) const;
    /** Makes id the parameter's only mapping. 1 or 13. */
    virtual int setControl (int parameter, std::uint16_t id);
    /** Appends id, also when it is there already. 1 or 13. */
    virtual int addControl (int parameter, std::uint16_t id);
    /** Removes every occurrence of id from every parameter. */
    virtual void removeControl (std::uint16_t id);
    virtual bool isMapped (int parameter, std::uint16_t id) const;
    /** Writes the first parameter mapped to id, or -1, to index. Returns whether there is one. */
    virtual bool findParameter (std::uint16_t id, int& index) const;

    /** Removes every mapping to a control value that is no longer in use. */
    void pruneInvalidControls();

private:
    static bool isValidIndex (int parameter) { return parameter >= 0 && parameter < numParameters; }
    MVControlIdList& listAt (int parameter) { return controlLists[static_cast<std::size_t> (parameter)]; }
    const MVControlIdList& listAt (int parameter) const { return controlLists[static_cast<std::size_t> (parameter)]; }
    void loadParameter (int parameter, const MVRiffPacker& chunk);

    MVControlManager* controlManager;
    std::array<MVControlIdList, numParameters> controlLists;
    std::array<std::atomic<double>, numParameters> values {};
};

} // namespace morvanelab
