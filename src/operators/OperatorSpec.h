// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "network/MVNetNode.h"
#include "operators/ParameterSpec.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace morvanelab
{

/** The most inputs, and the most outputs, that an operator's execution descriptor can bind. */
constexpr int maxOperatorPorts = 16;

/** What a stored record turned out to be. */
enum class StoredRecord
{
    current, ///< of today's layout, to be read as it stands
    older,   ///< of an older layout, already read
    absent   ///< missing, or shorter than its layout
};

/** Everything that is constant about an operator class. The factory, the setters, the stored form, the texts,
    the text form of patches and the tests all read this record; nothing of it stands anywhere else. */
struct OperatorSpec
{
    std::uint32_t typeId = 0;
    const char* className = "MVOperator";
    const char* shortName = "base-operator";
    const char* description = "no description";

    int numInputs = 0;  ///< inputs of a new operator
    int numOutputs = 0; ///< outputs of a new operator
    /** Names in port order; there may be more of them than the operator has ports. */
    std::span<const char* const> inputNames {};
    std::span<const char* const> outputNames {};
    /** Where names follow the record or the port's number: these replace the lists. */
    std::string (*inputNameOf) (const void* record, int port) = nullptr;
    std::string (*outputNameOf) (const void* record, int port) = nullptr;
    /** Where the number of inputs follows the record: the number, in 0 to maxOperatorPorts. */
    int (*inputCountOf) (const void* record) = nullptr;
    /** Bit n is set if input n is read once a block, or as control data. */
    std::uint32_t controlInputs = 0;

    std::size_t attributeSize = 0;
    std::span<const ParameterSpec> parameters {};
    std::span<const FieldSpec> fields {}; ///< what the record holds beyond parameters and padding

    /** Result of the float setter for a value outside its limits. */
    int floatRejection = 17;
    /** Result of the sequence setter where there is no sequence. */
    int sequenceRefusal = 17;

    /** Where the record grew: reads what an older version code stored into a new operator's record. */
    StoredRecord (*readOlder) (std::uint32_t version, std::span<const std::byte> stored, void* record) = nullptr;

    /** Bytes of a new operator's record: initial values, zero in the padding. */
    std::vector<std::byte> newRecord() const;
    /** Writes the same to a record of attributeSize bytes. */
    void initialise (void* record) const;

    /** Reads a stored record of a version code into a new operator's record. An absent one leaves it alone. */
    StoredRecord readStored (std::uint32_t version, std::span<const std::byte> stored, void* record) const;

    /** Number of ports that an operator with this record has. */
    int portCount (const void* record, int direction) const;
    /** Name of a port, empty for no such port. It answers for every port of the record's count, and beyond it
        where the class has a name. */
    std::string portName (const void* record, int direction, int port) const;

    /** The parameter at index, or null. */
    const ParameterSpec* parameter (int index) const;
    /** Index of the parameter of this name, or -1. */
    int parameterIndex (const char* name) const;
};

/** The form of a name that ends in a port number: "text%d ". */
std::string numberedPortName (const char* text, int port);

} // namespace morvanelab
