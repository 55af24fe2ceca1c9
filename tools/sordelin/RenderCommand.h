// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace CLI
{
class App;
}

namespace morvanelab
{

/** sordelin render: a patch into a file of sound. */
void addRenderCommand (CLI::App& app);

} // namespace morvanelab
