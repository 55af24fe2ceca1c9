// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/PluginRig.h"

#include "host/BankList.h"
#include "host/LevelReport.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace morvanelab::test
{

namespace
{

constexpr const char* bankName = "Rig.mv_onbank";

} // namespace

double Take::peak() const { return host::measureLevel (left, right, 0, left.size()).peak; }

PluginRig::PluginRig (const RigSettings& settings)
{
    unsetenv ("DISPLAY");
    setenv ("SORDELIN_HOME", folder.file ("home").c_str(), 1);
    std::filesystem::create_directories (folder.path() / "vst");
    std::filesystem::create_directories (folder.path() / "home");
    std::filesystem::copy_file (SORDELIN_PLUGIN_FILE, folder.path() / "vst" / "iSordelin64.so");
    writeRigSettings (folder.path() / "home", settings);
    writeRigBank (folder.path() / "vst" / bankName);
    plugin = std::make_unique<host::VstLibrary> (folder.file ("vst/iSordelin64.so"));
}

std::unique_ptr<host::VstInstance> PluginRig::open()
{
    auto instance = std::make_unique<host::VstInstance> (*plugin);
    instance->setOffline (true);
    return instance;
}

std::unique_ptr<host::VstInstance> PluginRig::openWithPatch (int slot, double rate, int block)
{
    auto instance = open();
    instance->start (rate, block);
    instance->setState (stateFor (slot));
    return instance;
}

std::vector<std::uint8_t> PluginRig::stateFor (int slot) const
{
    return host::makeState (host::readBankList (folder.file ("home/Sordelin_Banks.mv_bankmgr")), bankName, slot);
}

Take render (host::VstInstance& instance, int frames, const std::vector<int>& blocks,
             const std::vector<host::MidiBytes>& messages)
{
    Take take;
    if (! messages.empty())
        instance.send (messages);
    for (std::size_t turn = 0; frames > 0; ++turn)
    {
        const int block = std::min (frames, blocks[turn % blocks.size()]);
        instance.render (block, take.left, take.right);
        frames -= block;
    }
    return take;
}

host::MidiBytes noteOn (int key, int velocity)
{
    return { 0, { 0x90, static_cast<unsigned char> (key), static_cast<unsigned char> (velocity) } };
}

template <typename Number>
Number stateField (const std::vector<std::uint8_t>& state, std::size_t offset)
{
    Number value {};
    if (offset + sizeof value <= state.size())
        std::memcpy (&value, state.data() + offset, sizeof value);
    return value;
}

template double stateField (const std::vector<std::uint8_t>&, std::size_t);
template std::int32_t stateField (const std::vector<std::uint8_t>&, std::size_t);

} // namespace morvanelab::test
