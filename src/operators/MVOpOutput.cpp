// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOpOutput.h"

#include "dsp/MVBlockMath.h"
#include "foundation/MVMath.h"
#include "foundation/MVResult.h"
#include "operators/AttributeRecord.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace morvanelab
{

namespace
{

constexpr double shortestTime = 0.05000000074505806;
constexpr MVFRange timeRange { shortestTime, 9.949999999254942 };
constexpr int mostChannelGroups = 3;
constexpr int portsPerGroup = 4;
constexpr double compressorCeiling = 1.0;

enum PARAMETER_t : int
{
    parameterRise,
    parameterRelease,
    parameterVolume,
    parameterRollOff,
    parameterThreshold
};

// A new output's volume is the full word 0x7FFFFFFF; roll-off and threshold are the words nearest to 1.0 and 0.9.
constexpr ParameterSpec parameters[] {
    floatSpec ("Rise time in seconds", "The time in seconds for this output to rise to full volume.",
               offsetof (OutputAttributes, riseTime), timeRange, shortestTime),
    floatSpec ("Release time in seconds", "The time in seconds for this output to decay to zero.",
               offsetof (OutputAttributes, releaseTime), timeRange, shortestTime),
    floatSpec ("Pre-compressed volume", "Volume scaling factor before compression and mixdown.",
               offsetof (OutputAttributes, preCompressedVolume), { 0.0010000000474974513, 0.9989999999525025 }, 1.0,
               Storage::fixedSigned31),
    floatSpec ("Compressor Roll-off", "Length of time for peak ducking to smooth out.",
               offsetof (OutputAttributes, compressorRollOff), { 0.0, 4.0 }, 1.0, Storage::fixedUnsigned31),
    floatSpec ("Compressor threshold", "Threshold at which compression becomes active.",
               offsetof (OutputAttributes, compressorThreshold), { 0.1, 0.8900000095367432 }, 0.9,
               Storage::fixedUnsigned31)
};

constexpr FieldSpec fields[] {
    { .name = "channelGroups", .offset = offsetof (OutputAttributes, channelGroups), .initial = 1 },
    { .name = "reserved", .offset = offsetof (OutputAttributes, reserved), .initial = 0 },
    { .name = "compressorEnabled",
      .storage = Storage::byte,
      .offset = offsetof (OutputAttributes, compressorEnabled),
      .initial = 1 }
};

int foldedGroups (int stored) { return wrapToIntRange (stored, 0, mostChannelGroups); }

int storedInputCount (const void* record)
{
    return foldedGroups (attributeRecord::readField (record, fields[0])) * portsPerGroup + 1;
}

std::string inputName (const void*, int port)
{
    if (port == 0)
        return "Mono Mix Input";

    constexpr const char* kinds[] { "Panned Mix Input", "Left-Right Pan Pos", "Unused", "Unused" };
    return numberedPortName ("CH ", (port - 1) / portsPerGroup) + kinds[(port - 1) % portsPerGroup];
}

/** The layout of early patches: groups first, and one double at byte 16 for both times. */
StoredRecord readOlderRecord (std::uint32_t version, std::span<const std::byte> stored, void* record)
{
    constexpr std::uint32_t firstReadable = 9300;
    constexpr std::uint32_t firstCurrent = 100100;
    constexpr std::size_t timeOffset = 16;
    constexpr std::size_t olderSize = timeOffset + sizeof (double);

    if (version >= firstCurrent)
        return StoredRecord::current;
    if (version < firstReadable)
        return StoredRecord::older;
    if (stored.size() < olderSize)
        return StoredRecord::absent;

    OutputAttributes read {};
    std::memcpy (&read.channelGroups, stored.data(), sizeof (read.channelGroups));
    std::memcpy (&read.riseTime, stored.data() + timeOffset, sizeof (read.riseTime));
    read.releaseTime = read.riseTime;
    read.preCompressedVolume = 0x7FFFFFFF;
    read.reserved = 0x7FFFFFFF;
    read.compressorRollOff = 0x79999980;
    read.compressorThreshold = 0x59999980;
    read.compressorEnabled = 1;
    std::memcpy (record, &read, sizeof (read));
    return StoredRecord::older;
}

} // namespace

constinit const OperatorSpec MVOpOutput::spec {
    .typeId = 0xA70006,
    .className = "MVOpOutput",
    .shortName = "Output",
    .description = "A signal output for a patch.  Signal directed to this operator is what will be mixed and "
                   "heard/seen.",
    .numInputs = 1 + portsPerGroup,
    .inputNameOf = inputName,
    .inputCountOf = storedInputCount,
    .attributeSize = sizeof (OutputAttributes),
    .parameters = parameters,
    .fields = fields,
    .floatRejection = resultOutputRejected,
    .readOlder = readOlderRecord,
};

MVOpOutput::MVOpOutput (MVRenderEngineAttributes* renderAttributes, const MVSmartPtr<MVRiffPacker>& storedChunk)
    : MVOpWithAttributes (renderAttributes, storedChunk)
{
    setAttributes (nullptr);
}

void MVOpOutput::attributesChanged()
{
    values.channelGroups = foldedGroups (values.channelGroups);
    changePortCount (portsIn, values.channelGroups * portsPerGroup + 1);

    if (evolving)
        values.compressorEnabled = 1;

    volume = floatParameter (parameterVolume);
    rollOff = floatParameter (parameterRollOff);
    threshold = floatParameter (parameterThreshold);
    riseStep = blockFrames / (sampleRate() * values.riseTime);
    releaseStep = blockFrames / (sampleRate() * values.releaseTime);

    for (Channel& channel : channels)
        prepareCompressor (*channel.compressor);
}

void MVOpOutput::prepareCompressor (MVCompressor& compressor) const
{
    compressor.init (true, sampleRate());
    compressor.setCeiling (compressorCeiling);
    compressor.setRollOff (rollOff);
    compressor.setThreshold (threshold);
}

void MVOpOutput::setActive (bool flag)
{
    MVOperator::setActive (flag);
    channels.clear();
    if (! flag)
        return;

    clearState();
    mixer = &MVSurroundMixer::instance();
    areChannelsEqual = true;
    channels.resize (static_cast<std::size_t> (std::clamp (attributes->numOutputChannels, 0, mostChannels)));
    attributesChanged();
}

void MVOpOutput::reset()
{
    clearState();
    areChannelsEqual = true;
    for (Channel& channel : channels)
        channel.compressor->reset();
}

void MVOpOutput::clearState()
{
    gain = 0.0;
    releaseCount = 0;

    for (GroupTracks& tracks : groupTracks)
    {
        tracks.pan.reset();
        tracks.volume.reset();
    }
}

void MVOpOutput::refreshControls()
{
    for (int group = 0; group < mostGroups; ++group)
    {
        GroupTracks& tracks = groupTracks[static_cast<std::size_t> (group)];
        tracks.volume.control = trackedControl (portsPerGroup * group + 1);
        tracks.pan.control = trackedControl (portsPerGroup * group + 2);
    }
}

bool MVOpOutput::setPortCount (int direction, int count)
{
    if (direction != portsIn || count == portCount (portsIn) || count >= maxOperatorPorts)
        return false;

    const int groups = (std::max (1, count) - 1 + portsPerGroup - 1) / portsPerGroup;

    if (groups * portsPerGroup + 1 < maxOperatorPorts)
    {
        values.channelGroups = groups;
        setAttributes (nullptr);
    }

    return false;
}

bool MVOpOutput::canSetPortCount (int direction) const { return direction == portsIn && values.channelGroups < 4; }

void MVOpOutput::noteEvent (int, double velocity) { noteStart (velocity); }

void MVOpOutput::noteStart (double)
{
    gain = 1.0;
    releaseCount = 0;
}

void MVOpOutput::release()
{
    MVOperator::release();
    if (releaseCount < std::numeric_limits<int>::max())
        ++releaseCount;
}

double MVOpOutput::nextGain() const
{
    if (releaseCount < 1)
        return gain < 1.0 ? std::min (1.0, gain + riseStep) : gain;
    return gain > 0.0 ? gain - releaseStep : gain;
}

void MVOpOutput::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                          int frames, const MVOpExecDesc& desc)
{
    frames = std::min (frames, blockFrames);
    const double gainEnd = nextGain();
    const double volumeStart = volume * gain;
    const double volumeEnd = volume * gainEnd;

    const int groups = std::clamp ((inputCount - 1) / portsPerGroup, 0, mostGroups);
    for (int group = 0; group < groups; ++group)
        if (desc.isInputConnected (portsPerGroup * group + 1))
            splitChannels();

    for (Channel& channel : renderedChannels())
        mixMono (channel, inputCount > 0 && desc.isInputConnected (0) ? inputs[0] : nullptr, frames, volumeStart,
                 volumeEnd);

    for (int group = 0; group < groups; ++group)
    {
        GroupTracks& tracks = groupTracks[static_cast<std::size_t> (group)];
        tracks.pan.advance();
        tracks.volume.advance();
        if (desc.isInputConnected (portsPerGroup * group + 1))
            mixGroup (group, inputs, frames, volumeStart, volumeEnd);
    }

    addToOutputs (outputCount, outputs, frames);
    gain = gainEnd;
    MVOperator::process (inputCount, inputs, outputCount, outputs, frames, desc);
}

std::span<MVOpOutput::Channel> MVOpOutput::renderedChannels()
{
    return std::span (channels).first (areChannelsEqual ? std::min<std::size_t> (1, channels.size()) : channels.size());
}

void MVOpOutput::splitChannels()
{
    if (! areChannelsEqual)
        return;

    areChannelsEqual = false;
    for (std::size_t i = 1; i < channels.size(); ++i)
        channels[i].compressor.emplace (*channels[0].compressor);
}

/** Starts a channel's mix; without a signal, which would add zeros, it is silent. */
void MVOpOutput::mixMono (Channel& channel, const double* signal, int frames, double gainStart, double gainEnd)
{
    channel.mix.fill (0.0);
    if (signal != nullptr)
        rampMix (channel.mix.data(), signal, frames, gainStart, gainEnd);
}

void MVOpOutput::mixGroup (int group, const double* const* inputs, int frames, double gainStart, double gainEnd)
{
    std::array<double*, mostChannels> mixes {};
    std::transform (channels.begin(), channels.end(), mixes.begin(), [] (Channel& c) { return c.mix.data(); });

    const GroupTracks& tracks = groupTracks[static_cast<std::size_t> (group)];
    const double* const* const first = inputs + portsPerGroup * group + 1;
    mixer->mix (mixes.data(), static_cast<int> (channels.size()), first[0], first[1], first[2], first[3], frames,
                tracks.pan.start(), tracks.pan.end(), gainStart * tracks.volume.start(), gainEnd * tracks.volume.end());
}

void MVOpOutput::addToOutputs (int outputCount, double* const* outputs, int frames)
{
    // The compressor works in whole frames; what lies behind the block is zero.
    constexpr int frame = MVCompressor::frameSize;
    const int wholeFrames = (frames + frame - 1) / frame * frame;
    for (Channel& channel : renderedChannels())
        channel.compressor->process (channel.mix.data(), wholeFrames);

    const std::size_t count = std::min (static_cast<std::size_t> (std::max (0, outputCount)), channels.size());
    for (std::size_t i = 0; i < count; ++i)
        blockAdd (outputs[i], channels[areChannelsEqual ? 0 : i].mix.data(), frames);
}

} // namespace morvanelab
