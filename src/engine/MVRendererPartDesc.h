// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace morvanelab
{

/** States of a sounding note. 2 is handled as 1 and 3 as 0; the renderer writes only 0, 1 and 4. */
enum PART_STATE_t : int
{
    PART_DEAD = 0,
    PART_PLAYING = 1,
    PART_PLAYING_ALIAS = 2,
    PART_DEAD_ALIAS = 3,
    PART_RELEASED = 4
};

/** One sounding note: a key and a velocity on one voice. A plain record with no lock of its own; the renderer
    that owns it reads and writes it while the audio is excluded or on the audio thread itself. */
class MVRendererPartDesc
{
public:
    /** A dead part of a voice; start() brings it to life. */
    explicit MVRendererPartDesc (int voice) : voiceIndex (voice) {}
    virtual ~MVRendererPartDesc() = default;

    virtual const char* className() const { return "MVRendererPartDesc"; }
    virtual int getState() const { return state; }
    virtual int getVoiceIndex() const { return voiceIndex; }
    /** 0 to 1, kept in single precision. */
    virtual double getVelocity() const { return static_cast<double> (velocity); }
    virtual int getKey() const { return key; }
    virtual void setVelocity (double value) { velocity = static_cast<float> (value); }
    virtual void setKey (int value) { key = value; }
    /** The key was let go: the part sounds on until its operators have finished. */
    virtual void release() { state = PART_RELEASED; }
    /** The part's voice is given back at the next block. */
    virtual void kill() { state = PART_DEAD; }

    /** A new note on the same voice: records are reused, so that a note costs no heap. */
    void start (int newKey, double newVelocity)
    {
        setKey (newKey);
        setVelocity (newVelocity);
        state = PART_PLAYING;
    }

private:
    int voiceIndex;
    int state = PART_DEAD;
    int key = 0;
    float velocity = 0.0F;
};

} // namespace morvanelab
