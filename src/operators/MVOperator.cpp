// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/MVOperator.h"

#include "foundation/MVChunks.h"
#include "foundation/MVMath.h"
#include "operators/AttributeRecord.h"

#include <algorithm>
#include <cstring>

namespace morvanelab
{

namespace
{
constexpr std::uint32_t classTag = fourCC ("clas");
constexpr std::uint32_t attributeTag = fourCC ("attr");
constexpr std::uint32_t identityTag = fourCC ("guid");
constexpr std::uint32_t evolvingTag = fourCC ("evol");
constexpr std::uint32_t inputsTag = fourCC ("inpt");
constexpr std::uint32_t scaleTag = fourCC ("insc");
constexpr std::uint32_t controlTag = fourCC ("cmap");

constexpr OperatorSpec noSpec {};

StoredRecord readStoredRecord (const OperatorSpec& spec, const MVSmartPtr<MVRiffPacker>& chunk, void* record)
{
    const auto stored = chunk ? chunk->findChild (attributeTag) : MVSmartPtr<MVRiffPacker>();
    if (! stored)
        return StoredRecord::absent;

    const auto* const bytes = reinterpret_cast<const std::byte*> (stored->getPayload());
    return spec.readStored (storedVersionCode (*chunk).value_or (currentVersionCode),
                            { bytes, static_cast<std::size_t> (stored->readablePayload()) }, record);
}

} // namespace

bool hasStoredRecord (const OperatorSpec& spec, const MVSmartPtr<MVRiffPacker>& storedChunk)
{
    auto scratch = spec.newRecord();
    return readStoredRecord (spec, storedChunk, scratch.data()) != StoredRecord::absent;
}

MVOperator::MVOperator (MVRenderEngineAttributes* renderAttributes) : MVOperator (noSpec, renderAttributes, {}) {}

MVOperator::MVOperator (const OperatorSpec& spec, MVRenderEngineAttributes* renderAttributes,
                        const MVSmartPtr<MVRiffPacker>& storedChunk)
    : attributes (renderAttributes), operatorSpec (&spec)
{
    changePortCount (portsIn, spec.numInputs);
    changePortCount (portsOut, spec.numOutputs);

    if (! storedChunk)
        return;

    setId (childNumber<std::uint64_t> (*storedChunk, identityTag).value_or (getId()));
    evolving = childNumber<std::uint8_t> (*storedChunk, evolvingTag).value_or (0) != 0;
    if (const auto inputs = storedChunk->findChild (inputsTag))
        readInputs (*inputs);
}

MVOperator::MVOperator (const MVOperator& other)
    : MVNetNode (other), attributes (other.attributes), controlValues (other.controlValues), released (other.released),
      evolving (other.evolving), operatorSpec (other.operatorSpec), monitorsEnabled (other.monitorsEnabled),
      monitors (other.monitors ? std::make_unique<MVOpMonitors> (*other.monitors) : nullptr)
{
}

MVOperator::~MVOperator() = default;

void MVOperator::readInputs (const MVRiffPacker& chunk)
{
    // Entries beyond the operator's ports go when its constructor settles the number of ports.
    for (int i = 0; i < maxOperatorPorts; ++i)
    {
        if (const auto scale = childNumber<double> (chunk, scaleTag, i))
            setInputScale (i, *scale);
        if (const auto control = childNumber<std::int32_t> (chunk, controlTag, i))
            setInputControl (i, *control);
    }
}

void MVOperator::readRecord (const MVSmartPtr<MVRiffPacker>& storedChunk, void* record) const
{
    operatorSpec->initialise (record);
    readStoredRecord (*operatorSpec, storedChunk, record);
}

void MVOperator::setActive (bool flag)
{
    MVNetNode::setActive (flag);
    released = false;
    refreshControls();
}

void MVOperator::setAttributes (const void* block)
{
    if (void* const record = attributeData(); record != nullptr)
    {
        if (block != nullptr && block != record)
            std::memmove (record, block, static_cast<std::size_t> (attributeSize()));

        for (const ParameterSpec& parameter : operatorSpec->parameters)
            attributeRecord::fold (record, parameter, attributes->numInputChannels);
    }

    attributesChanged();
}

MVSmartPtr<MVString> MVOperator::portName (int direction, int port) const
{
    const std::string name = operatorSpec->portName (attributeData(), direction, port);
    return name.empty() ? MVSmartPtr<MVString>() : makeSmart<MVString> (name.c_str());
}

bool MVOperator::isControlInput (int port) const
{
    return port >= 0 && port < 32 && (operatorSpec->controlInputs >> port & 1u) != 0;
}

void MVOperator::process (int inputCount, const double* const* inputs, int outputCount, double* const* outputs,
                          int frames, const MVOpExecDesc&)
{
    if (monitorsEnabled && monitors != nullptr)
        monitors->serve (getId(), inputCount, inputs, outputCount, outputs, frames);
}

void MVOperator::setControlValues (const MVVector<MVControlValue*>* values) { controlValues = values; }

void MVOperator::noteEvent (int, double) {}

void MVOperator::noteStart (double) {}

MVSmartPtr<MVRiffPacker> MVOperator::pack() const
{
    auto list = makeSmart<MVRiffPacker> (fourCC ("op  "));
    addChunk (*list, classTag, typeId());
    list->addChild (makeSmart<MVRiffPacker> (attributeTag, attributeData(), attributeSize()));
    addChunk (*list, identityTag, getId());
    addVersionChunk (*list);

    auto inputs = makeSmart<MVRiffPacker> (inputsTag);
    for (int i = 0; i < getNumPorts (portsIn); ++i)
    {
        addChunk (*inputs, scaleTag, getInputScale (i));
        addChunk (*inputs, controlTag, std::int32_t { getInputControl (i) });
    }

    list->addChild (inputs);
    return list;
}

MVOpMonitors& MVOperator::getMonitors()
{
    if (monitors == nullptr)
        monitors = std::make_unique<MVOpMonitors>();
    return *monitors;
}

void MVOperator::changePortCount (int direction, int count)
{
    MVNetNode::setNumPorts (direction, std::clamp (count, 0, maxOperatorPorts));
}

const MVControlValue* MVOperator::controlOfInput (int port) const
{
    const int entry = getInputControl (port);
    return controlValues != nullptr && entry >= 0 && entry < controlValues->size() ? (*controlValues)[entry] : nullptr;
}

double MVOperator::controlFactor (int port) const
{
    const MVControlValue* const control = controlOfInput (port);
    return control != nullptr ? control->getValue() : 1.0;
}

} // namespace morvanelab
