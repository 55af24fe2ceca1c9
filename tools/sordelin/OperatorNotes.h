// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "operators/OperatorSpec.h"

#include <string>
#include <vector>

namespace morvanelab
{

/** What the manual tells of a port beyond its name. */
struct PortNote
{
    std::string reading; ///< of an input: "each sample", "once a block" or "not read"
    std::string factors; ///< of an input: which of "scale" and "control" multiply what arrives, or "none"
    std::string meaning; ///< unit and limits
};

/** What the operator table does not hold: an explanation, the units of the ports, and an example. The texts are the
    files resources/operators/<class>.md, which the build puts into the program. Such a file has paragraphs, then one
    line for each port, "- in 0 | reading | factors | meaning" and "- out 0 | meaning", where the number may also be
    "0-15" or "all", and then a patch between ```json and ```. */
struct OperatorNotes
{
    std::string text;
    std::vector<PortNote> inputs; ///< one for each port of a new operator
    std::vector<PortNote> outputs;
    std::string example; ///< a patch in the text form, with a line feed at its end

    /** The notes of an operator. Throws badData, naming the class, if there are none or if they do not tell of each
        port exactly once. */
    static OperatorNotes of (const OperatorSpec& spec);
};

/** One text for each file of resources/operators, by class name. The build makes it. */
struct EmbeddedNote
{
    const char* className;
    const char* text;
};
extern const EmbeddedNote embeddedNotes[];
extern const std::size_t embeddedNoteCount;

} // namespace morvanelab
