// SPDX-License-Identifier: GPL-3.0-or-later
#include "OperatorRig.h"

#include "foundation/MVChunks.h"
#include "foundation/MVMath.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>

namespace morvanelab::test
{

OperatorRig::OperatorRig (const OperatorSpec& spec, const MVSmartPtr<MVRiffPacker>& storedChunk)
    : shared (std::make_shared<MVRenderEngineAttributes>()), manager (std::make_shared<MVControlManager> (nullptr)),
      controls (std::make_shared<MVVector<MVControlValue*>>())
{
    registerOperators (*shared);
    manager->resizeControls (controlCount);
    for (int i = 0; i < controlCount; ++i)
        controls->add (manager->acquireControl (i + 1));

    owned.reset (shared->operatorFactoryFor (spec.typeId)->create (shared.get(), storedChunk));
    owned->setControlValues (controls.get());
    prepare();
}

OperatorRig::OperatorRig (OperatorRig& host, MVOperator* cloneToOwn)
    : shared (host.shared), manager (host.manager), controls (host.controls), owned (cloneToOwn),
      inputBuffers (host.inputBuffers)
{
    prepare();
    desc.inputSrcNode = host.desc.inputSrcNode;
}

void OperatorRig::prepare()
{
    for (std::size_t i = 0; i < inputs.size(); ++i)
    {
        inputs[i] = inputBuffers[i].data();
        outputs[i] = outputBuffers[i].data();
        desc.inputSrcNode.add (-1);
    }
}

void OperatorRig::setInput (int port, double value)
{
    inputBuffers[static_cast<std::size_t> (port)].fill (value);
    connect (port, true);
}

void OperatorRig::setInput (int port, const std::vector<double>& block)
{
    std::copy (block.begin(), block.end(), inputBuffers[static_cast<std::size_t> (port)].begin());
    connect (port, true);
}

void OperatorRig::connect (int port, bool connected) { desc.inputSrcNode.setItem (port, connected ? 1 : -1); }

void OperatorRig::setControl (int index, double value)
{
    manager->setControlValue (index + 1, value);
    manager->processAsyncValues();
}

void OperatorRig::follow (int port, int controlIndex)
{
    owned->setInputControl (port, controlIndex);
    owned->refreshControls();
}

int OperatorRig::numInputs() const
{
    return owned->typeId() == inputTypeId ? shared->numInputChannels : owned->portCount (portsIn);
}

int OperatorRig::numOutputs() const
{
    return owned->typeId() == outputTypeId ? shared->numOutputChannels : owned->portCount (portsOut);
}

void OperatorRig::process (int frames)
{
    const double before = owned->typeId() == outputTypeId ? 0.0 : std::numeric_limits<double>::quiet_NaN();
    for (Buffer& buffer : outputBuffers)
        buffer.fill (before);

    owned->process (numInputs(), inputs.data(), numOutputs(), outputs.data(), frames, desc);
}

std::vector<double> OperatorRig::render (int blocks, int frames)
{
    std::vector<double> rendered;

    for (int block = 0; block < blocks; ++block)
    {
        process (frames);
        for (int port = 0; port < numOutputs(); ++port)
            rendered.insert (rendered.end(), output (port), output (port) + frames);
    }

    return rendered;
}

bool OperatorRig::allFinite (int frames) const
{
    for (int port = 0; port < numOutputs(); ++port)
        if (! std::all_of (output (port), output (port) + frames, [] (double x) { return std::isfinite (x); }))
            return false;
    return true;
}

const OperatorSpec& specOf (const char* className)
{
    const OperatorSpec* const spec = findOperatorSpec (std::string_view (className));
    if (spec == nullptr)
        throw std::runtime_error (std::string ("no operator ") + className);
    return *spec;
}

MVSmartPtr<MVRiffPacker> storedOperator (std::uint32_t typeId, const void* record, int recordSize, int major, int minor,
                                         int revision)
{
    auto list = makeSmart<MVRiffPacker> (fourCC ("op  "));
    addChunk (*list, fourCC ("clas"), typeId);
    if (record != nullptr)
        list->addChild (makeSmart<MVRiffPacker> (fourCC ("attr"), record, recordSize));
    if (major >= 0)
        addChunk (*list, fourCC ("ver "), std::array<std::int32_t, 4> { major, minor, revision, 1 });
    return list;
}

} // namespace morvanelab::test
