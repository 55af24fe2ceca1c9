// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "control/MVControlManager.h"
#include "control/MVMidiChannel.h"
#include "control/MVMidiEvent.h"
#include "control/MVMidiMapList.h"
#include "foundation/MVEventHandler.h"
#include "foundation/MVList.h"
#include "foundation/MVLocker.h"
#include "foundation/MVRange.h"
#include "foundation/MVRiffPacker.h"

#include <array>
#include <atomic>
#include <cstdint>

namespace morvanelab
{

/** Event types that the MIDI manager handles. */
enum MIDI_EVENT_t : std::uint32_t
{
    midiEventPruneMappings = 2,
    midiEventLoadMap = 7
};

/** Cuts raw MIDI bytes into messages, counts sounding notes by channel, and writes mapped controllers to control
    values. Notes go no further than the counters.

    Threads: tokenizeMidiData and processMidiDataBuffer run on the audio thread, take no lock and allocate nothing
    in steady state; a queue belongs to one thread at a time. Mappings are changed on the event and message threads
    under mappingLock, which the audio thread never takes: it walks published lists (see MVMidiMapList). The note
    counters are relaxed atomics; a reset that races with notes may lose either.

    Channels outside 0 to 15, keys outside 0 to 127 and controllers outside 0 to 255 name no list: changes give
    false, queries find nothing. */
class MVMidiManager : public MVEventHandler
{
public:
    static constexpr int numChannels = 16;
    /** Records in one list; stored maps are data from a stranger. */
    static constexpr int maxRecords = 1024;

    /** Registers as a handler of the event manager, which may be null. Both must outlive this object. */
    MVMidiManager (MVControlManager* controls, MVEventManager* events);
    ~MVMidiManager() override;

    const char* className() const override { return "MVMidiManager"; }
    /** Zeroes the note counters of all channels; the mappings stay. */
    void reset() override;

    virtual void clearAllMappings();
    /** Empties all mappings and reads a 'midm' tree of version 1.4.0 or older; a newer one leaves them empty. All
        loaded mappings are enabled, and the caller's reference is released. resultWrongForm for another tree,
        which changes nothing, else resultDone. */
    virtual int loadMidiMap (MVSmartPtr<MVRiffPacker>& packer);
    /** A 'midm' tree of all mappings whose target is a control value in use. */
    virtual MVSmartPtr<MVRiffPacker> saveMidiMap();
    /** The controller drives this value and nothing else. */
    virtual bool setMidiControlToValueId (int channel, int controller, int valueId);
    /** The controller drives this value too. */
    virtual bool addMidiControlToValueId (int channel, int controller, int valueId);
    /** No controller drives this value any more. */
    virtual void unmapControlValueId (int valueId);
    /** In every controller's list, sets the flag of the first record with this value. */
    virtual void enableMappedControlValueId (int valueId, bool flag);
    virtual bool isKeyMappedToHandler (std::uint64_t handler, int channel, int key);
    virtual bool isControlMappedToValueId (int valueId, int channel, int controller);
    /** Channel and controller of the last mapping found, channels and controllers ascending. The outputs stay
        untouched if there is none. */
    virtual bool getMidiControlForValueId (int valueId, int& channel, int& controller);
    virtual bool setMidiKeyHandler (int channel, int key, std::uint64_t handler);
    virtual bool addMidiKeyHandler (int channel, int key, std::uint64_t handler);
    /** For each key from keys.low to keys.low + keys.span, both included; stops at the first false. */
    virtual bool setMidiKeyRangeHandler (int channel, MVIRange keys, std::uint64_t handler);
    virtual bool addMidiKeyRangeHandler (int channel, MVIRange keys, std::uint64_t handler);
    /** Adds valueIds[k] to controller controllers.low + k, for each k from 0 below controllers.span. True. */
    virtual bool addMidiCCtoControlValueRange (int channel, MVIRange controllers, const std::uint16_t* valueIds);
    virtual void unmapKeyHandler (std::uint64_t handler);
    /** Lowest counted note and what lies above it, in note numbers that count from 1; (-1, 0) while no note sounds.
        A range that was just opened has span 1 at note 0, else 0. */
    virtual MVIRange getActiveNoteRange (int channel) const;

    /** Cuts count bytes into tokens and appends them to queue, where a token with the same status, channel and
        first data byte is overwritten instead; counts notes. Status bytes are needed for every message: running
        status is not supported. Data bytes are signed: a note or controller message with a negative one is
        consumed and ignored, and so is what is left of a message cut at the end. The flag is not read. Returns
        whether the bytes held a channel message. */
    bool tokenizeMidiData (const std::uint8_t* bytes, int count, bool flag, MVList<MVMidiEvent>& queue);
    /** Tokenises the bytes and acts on the tokens: each controller but 123 writes data2 / 127 to the enabled values
        mapped to it, in list order. Returns what the tokeniser returned. */
    bool processMidiDataBuffer (const std::uint8_t* bytes, int count, bool flag);
    /** Removes controller mappings whose value is not in use. */
    void pruneInvalidMappings();

    /** Raises MVException 9 "Error:  Bad midi preset." if a map to load is no chunk tree. */
    int handleEvent (MVEvent* event) override;
    void handleThreadMsg (std::uint32_t) override {}

    /** Notes sounding on a channel; 0 for a bad channel. */
    int getActiveNotes (int channel) const;
    /** Note starts that have come in since construction, on any channel, wrapping at 32 bits: a reader who sees it
        change knows that somebody plays. Any thread. */
    std::uint32_t getNoteStarts() const { return noteStarts.load (std::memory_order_relaxed); }

private:
    using Records = MVMidiMapList::Records;

    MVMidiMapList* controllerList (int channel, int controller);
    MVMidiMapList* keyList (int channel, int key);
    bool replace (MVMidiMapList* list, const _mv_midi_map& record);
    bool append (MVMidiMapList* list, const _mv_midi_map& record);
    bool appendAll (MVMidiMapList& list, const Records& added);
    /** Calls visitor (list, channel, controller), channels and controllers ascending. */
    template <typename Visitor>
    void forEachControllerList (Visitor&& visitor)
    {
        for (int channel = 0; channel < numChannels; ++channel)
            for (int controller = 0; controller < MVMidiChannel::numControllers; ++controller)
                visitor (*controllerList (channel, controller), channel, controller);
    }
    template <typename Visitor>
    void forEachKeyList (Visitor&& visitor)
    {
        for (int channel = 0; channel < numChannels; ++channel)
            for (int key = 0; key < MVMidiChannel::numKeys; ++key)
                visitor (*keyList (channel, key), channel, key);
    }
    template <typename Test>
    bool anyRecord (MVMidiMapList* list, Test&& test);
    template <typename Test>
    void removeRecords (MVMidiMapList& list, Test&& test);

    void readControllerMaps (const MVRiffPacker& form);
    void readKeyMaps (const MVRiffPacker& form);
    template <typename Reader>
    void readMaps (const MVRiffPacker& form, std::uint32_t chunkId, Reader&& readChunk);

    void countToken (const MVMidiEvent& token);
    void queueToken (const MVMidiEvent& token, MVList<MVMidiEvent>& queue);
    void processController (const MVMidiEvent& token);

    MVControlManager* controlManager;
    MVEventManager* eventManager;
    std::array<MVMidiChannel, numChannels> channels;
    std::atomic<std::uint32_t> noteStarts { 0 };
    MVList<MVMidiEvent> pendingEvents;
    MVLocker mappingLock;
    MVMidiMapReclaimer reclaimer;
};

} // namespace morvanelab
