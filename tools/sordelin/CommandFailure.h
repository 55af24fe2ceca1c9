// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <stdexcept>
#include <string>

namespace morvanelab
{

/** Why a command ends early, and the exit status that tells it. */
class CommandFailure : public std::runtime_error
{
public:
    static constexpr int wrongUse = 1;
    static constexpr int badData = 2;

    CommandFailure (int exitStatus, const std::string& text) : std::runtime_error (text), status (exitStatus) {}

    int getStatus() const { return status; }

private:
    int status;
};

/** The arguments are wrong: status 1, usage follows on stderr. */
inline CommandFailure wrongUse (const std::string& text) { return { CommandFailure::wrongUse, text }; }

/** A file holds bad data or a file operation failed: status 2. */
inline CommandFailure badData (const std::string& text) { return { CommandFailure::badData, text }; }

} // namespace morvanelab
