// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/* The binary interface between a VST 2.4 host and a plug-in, as far as the wrapper and the test host use it: the
   records and the numbers, laid out for 64-bit machines. Written for this project from publicly known facts.

   The file is included inside a namespace by its users, hence it includes nothing and declares plain C types.
   Names are those that the wrapper expects. */

#if defined(_WIN32)
typedef long long VstIntPtr;
#else
typedef long VstIntPtr;
#endif
typedef int VstInt32;

struct AEffect;

/** Both directions: (effect, opcode, index, value, pointer, option). */
typedef VstIntPtr (*AEffectDispatcherProc) (AEffect*, VstInt32, VstInt32, VstIntPtr, void*, float);
typedef VstIntPtr (*audioMasterCallback) (AEffect*, VstInt32, VstInt32, VstIntPtr, void*, float);
typedef void (*AEffectProcessProc) (AEffect*, float**, float**, VstInt32);
typedef void (*AEffectProcessDoubleProc) (AEffect*, double**, double**, VstInt32);
typedef void (*AEffectSetParameterProc) (AEffect*, VstInt32, float);
typedef float (*AEffectGetParameterProc) (AEffect*, VstInt32);

enum
{
    kEffectMagic = 0x56737450 ///< "VstP"
};

/* A macro because the wrapper uses the name outside the namespace, too. */
#define kVstVersion 2400

/** What the entry point returns: the plug-in as the host sees it. */
struct AEffect
{
    VstInt32 magic;
    AEffectDispatcherProc dispatcher;
    AEffectProcessProc process;
    AEffectSetParameterProc setParameter;
    AEffectGetParameterProc getParameter;
    VstInt32 numPrograms;
    VstInt32 numParams;
    VstInt32 numInputs;
    VstInt32 numOutputs;
    VstIntPtr flags;
    VstIntPtr resvd1;
    VstIntPtr resvd2;
    VstInt32 initialDelay; ///< latency in samples
    char spareNumbers[8];
    float spareRatio;
    void* object; ///< the plug-in's own
    void* user;   ///< the host's own
    VstInt32 uniqueID;
    VstInt32 version;
    AEffectProcessProc processReplacing;
    AEffectProcessDoubleProc processDoubleReplacing;
    char future[56];
};

enum VstAEffectFlags
{
    effFlagsHasEditor = 1 << 0,
    effFlagsCanReplacing = 1 << 4,
    effFlagsProgramChunks = 1 << 5,
    effFlagsIsSynth = 1 << 8,
    effFlagsNoSoundInStop = 1 << 9,
    effFlagsCanDoubleReplacing = 1 << 12
};

/** Size of the editor in pixels. */
struct ERect
{
    short top;
    short left;
    short bottom;
    short right;
};
