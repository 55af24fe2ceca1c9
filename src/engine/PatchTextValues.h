// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/PatchTextChunks.h"
#include "engine/StoredOperator.h"

namespace morvanelab::patchText
{

/** Writes one parameter's JSON value into a record. Numbers are checked against the limits, choices against their
    names; {"stored": x} is taken as it stands. */
void parameterFromJson (StoredOperator& op, const ParameterSpec& parameter, const Json& json, const TextPlace& place);

/** A parameter's value: as people write it if that gives the same bytes again, else {"stored": x}. */
Json parameterToJson (const StoredOperator& op, const ParameterSpec& parameter);

void fieldFromJson (StoredOperator& op, const FieldSpec& field, const Json& json, const TextPlace& place);
Json fieldToJson (const StoredOperator& op, const FieldSpec& field);

/** A double of any kind: a number, or {"stored": its 64 bits} where it is not finite. */
Json numberToJson (double value);
double numberFromJson (const Json& json, const TextPlace& place);

} // namespace morvanelab::patchText
