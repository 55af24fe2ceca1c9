// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/MVCompressor.h"
#include "dsp/MVSurroundMixer.h"
#include "operators/MVOpWithAttributes.h"

#include <array>
#include <optional>
#include <span>
#include <vector>

namespace morvanelab
{

struct OutputAttributes
{
    double riseTime;
    double releaseTime;
    std::int32_t channelGroups;
    std::int32_t preCompressedVolume;
    std::int32_t reserved;
    std::uint32_t compressorRollOff;
    std::uint32_t compressorThreshold;
    std::uint8_t compressorEnabled;
    std::uint8_t padding[3];
};
static_assert (sizeof (OutputAttributes) == 40);

/** The end of a patch: mixes a mono input and up to three panned ones to the mix channels, under the voice's rise
    and release, with a compressor for each channel. It has no output ports: process is given the channels and adds
    to them. The rise and the release move once a block. Holds its voice open until the release has ended. */
class MVOpOutput final : public MVOpWithAttributes<MVOpOutput, OutputAttributes>
{
public:
    static const OperatorSpec spec;

    explicit MVOpOutput (MVRenderEngineAttributes* attributes, const MVSmartPtr<MVRiffPacker>& storedChunk = {});

    /** Makes a mix buffer and a compressor for every output channel of the render attributes, eight at most. */
    void setActive (bool flag) override;
    /** Silence with the rise ahead, as when activated. */
    void reset() override;
    void refreshControls() override;
    /** Rounds the number of inputs up to 1 + 4 for each group and stores it. Always false, also when it did; refuses
        the present count and what comes to 16 or more. */
    bool setPortCount (int direction, int count) override;
    bool canSetPortCount (int direction) const override;
    /** At most 256 frames. */
    void process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs, int frames,
                  const MVOpExecDesc& desc) override;
    void noteEvent (int key, double velocity) override;
    /** Full gain at once, released or not. */
    void noteStart (double velocity) override;
    void release() override;
    bool isFinished() const override { return releaseCount >= 1 && gain <= 0.0; }
    bool isSinkNode() const override { return true; }

private:
    static constexpr int mostGroups = 3;
    static constexpr int mostChannels = 8;

    struct Channel
    {
        std::optional<MVCompressor> compressor { std::in_place };
        std::array<double, blockFrames> mix {};
    };

    /** The controls of one panned group. */
    struct GroupTracks
    {
        PortControlTrack pan;
        PortControlTrack volume;
    };

    void attributesChanged() override;
    void prepareCompressor (MVCompressor& compressor) const;
    void clearState();
    double nextGain() const;

    void mixGroup (int group, const double* const* inputs, int frames, double gainStart, double gainEnd);
    /** The channels that are mixed: the first, or all. */
    std::span<Channel> renderedChannels();
    void splitChannels();
    static void mixMono (Channel& channel, const double* signal, int frames, double gainStart, double gainEnd);
    void addToOutputs (int outputCount, double* const* outputs, int frames);

    double gain = 0.0; ///< of rise and release; may end slightly below 0
    double riseStep = 0.0;
    double releaseStep = 0.0;
    int releaseCount = 0;
    double volume = 0.0;
    double rollOff = 0.0;
    double threshold = 0.0;
    const MVSurroundMixer* mixer = nullptr;
    std::vector<Channel> channels;
    /** No panned signal was heard yet: all channels are the same, and the first is rendered for all. */
    bool areChannelsEqual = true;
    std::array<GroupTracks, mostGroups> groupTracks;
};

} // namespace morvanelab
