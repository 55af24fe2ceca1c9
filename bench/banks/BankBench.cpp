// SPDX-License-Identifier: GPL-3.0-or-later
#include "banks/MVBankFile.h"
#include "banks/MVContainerFormat.h"

#include <benchmark/benchmark.h>

#include <vector>

using namespace morvanelab;

namespace
{

constexpr int patchSize = 4096;

/** A bank file that is gone afterwards. */
class BankFixture : public benchmark::Fixture
{
public:
    void SetUp (benchmark::State&) override
    {
        file = juce::File::createTempFile (MVBankFile::fileExtension);
        const std::vector<std::uint8_t> patch (patchSize, 0x5A);
        slot = MVBankFile::packSlot (makeSmart<MVDataBlock> (patch.data(), patchSize));
    }
    void TearDown (benchmark::State&) override { file.deleteFile(); }

    /** The checksum of the bank's bytes: the same for every run and machine. */
    void printFingerprint (benchmark::State& state) const
    {
        MVContainerHeader header;
        if (! isCompleteContainer (file, header))
            state.SkipWithError ("the bank is damaged");
        state.SetLabel (juce::String::toHexString (static_cast<int> (header.checksum)).toStdString());
        state.counters["bytes"] = static_cast<double> (file.getSize());
    }

    juce::File file;
    MVSmartPtr<MVDataBlock> slot;
};

} // namespace

BENCHMARK_F (BankFixture, createBank) (benchmark::State& state)
{
    for (auto _ : state)
    {
        state.PauseTiming();
        file.deleteFile();
        state.ResumeTiming();
        MVBankFile().createBank (file);
    }
    printFingerprint (state);
}

BENCHMARK_F (BankFixture, storeOnePatchInAFullBank) (benchmark::State& state)
{
    MVBankFile bank;
    bank.createBank (file);
    for (int i = 0; i < MVBankFile::maxPatchesPerBank; ++i)
        bank.setPatchData (i, slot);

    for (auto _ : state)
        bank.setPatchData (31, slot);
    printFingerprint (state);
}

BENCHMARK_F (BankFixture, openAndVerifyAFullBank) (benchmark::State& state)
{
    MVBankFile bank;
    bank.createBank (file);
    for (int i = 0; i < MVBankFile::maxPatchesPerBank; ++i)
        bank.setPatchData (i, slot);

    for (auto _ : state)
        benchmark::DoNotOptimize (bank.openFile (file, true));
    printFingerprint (state);
}
