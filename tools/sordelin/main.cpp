// SPDX-License-Identifier: GPL-3.0-or-later
#include "BankCommand.h"
#include "CommandFailure.h"
#include "DoctorCommand.h"
#include "ManagerCommand.h"
#include "OperatorsCommand.h"
#include "PatchCommand.h"
#include "PresetCommand.h"
#include "RenderCommand.h"

#include "foundation/MVException.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>

namespace
{

using namespace morvanelab;

int tellWrongUse (const CLI::App& app, const char* text)
{
    std::fprintf (stderr, "%s\n\n%s", text, app.help().c_str());
    return CommandFailure::wrongUse;
}

int run (CLI::App& app, int argc, char** argv)
{
    try
    {
        app.parse (argc, argv);
        return 0;
    }
    catch (const CLI::CallForHelp&)
    {
        std::fputs (app.help().c_str(), stdout);
        return 0;
    }
    catch (const CLI::Success& success)
    {
        std::printf ("%s\n", success.what());
        return 0;
    }
    catch (const CLI::ParseError& error)
    {
        return tellWrongUse (app, error.what());
    }
    catch (const CommandFailure& failure)
    {
        if (failure.getStatus() == CommandFailure::wrongUse)
            return tellWrongUse (app, failure.what());
        std::fprintf (stderr, "%s\n", failure.what());
        return failure.getStatus();
    }
    catch (const MVException& failure)
    {
        std::fprintf (stderr, "%s\n", failure.text());
        return CommandFailure::badData;
    }
    catch (const std::exception& failure)
    {
        std::fprintf (stderr, "%s\n", failure.what());
        return CommandFailure::badData;
    }
}

} // namespace

int main (int argc, char** argv)
{
    CLI::App app { "Sordelin: patches and banks from the command line", "sordelin" };
    app.set_version_flag ("--version", "Sordelin " SORDELIN_VERSION);
    app.require_subcommand (1);
    addRenderCommand (app);
    addPatchCommand (app);
    addBankCommand (app);
    addManagerCommand (app);
    addPresetCommand (app);
    addOperatorsCommand (app);
    addDoctorCommand (app);
    return run (app, argc, argv);
}
