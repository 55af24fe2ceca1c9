// SPDX-License-Identifier: GPL-3.0-or-later
#include "banks/BankTestSupport.h"
#include "banks/DiskTrouble.h"

#include "banks/MVAppPersistentProps.h"
#include "banks/MVBankFileManager.h"
#include "banks/MVPropertiesFile.h"

#include <juce_events/juce_events.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>

using namespace morvanelab;
using namespace morvanelab::test;

namespace
{

/** Sets an environment variable, or removes it with null, until the end of the scope. */
class Variable
{
public:
    Variable (const char* variable, const char* value) : name (variable)
    {
        if (const char* const old = std::getenv (name); old != nullptr)
            former = old;
        apply (value);
    }
    ~Variable() { apply (former ? former->c_str() : nullptr); }
    Variable (const Variable&) = delete;
    Variable& operator= (const Variable&) = delete;

private:
    void apply (const char* value)
    {
        if (value != nullptr)
            setenv (name, value, 1);
        else
            unsetenv (name);
    }

    const char* name;
    std::optional<std::string> former;
};

class PersistentProps : public testing::Test
{
protected:
    TestFolder folder;
    juce::File home = folder.file ("home");
    Variable homeVariable { "SORDELIN_HOME", home.getFullPathName().toRawUTF8() };
    juce::File propsFile = home.getChildFile ("MorvaneLab_Sordelin_1.props");
};

} // namespace

TEST_F (PersistentProps, keepsEveryKindOfValueOverASession)
{
    const auto text = juce::String::fromUTF8 ("a \"b\" \xc3\xa4");
    const juce::String xml = "<a><b c=\"&lt;\"/></a>";
    {
        MVAppPersistentProps props;
        EXPECT_TRUE (props.getString ("text").isEmpty());
        EXPECT_EQ (props.getInt ("number", -3), -3);
        EXPECT_TRUE (props.getBool ("flag", true));
        EXPECT_FALSE (home.exists());

        EXPECT_TRUE (props.setString ("text", text));
        EXPECT_TRUE (props.setString ("dimension_settings", xml));
        EXPECT_TRUE (props.setInt ("number", 64));
        EXPECT_TRUE (props.setBool ("flag", false));
        EXPECT_FALSE (home.exists());
        props.flush();
        EXPECT_TRUE (propsFile.existsAsFile());
        props.setInt ("number", 65);
    }

    const MVAppPersistentProps props;
    EXPECT_EQ (props.getFile(), propsFile);
    EXPECT_EQ (props.getString ("text"), text);
    EXPECT_EQ (props.getInt ("number", 0), 65);
    EXPECT_FALSE (props.getBool ("flag", true));
    EXPECT_TRUE (
        juce::parseXML (props.getString ("dimension_settings"))->isEquivalentTo (juce::parseXML (xml).get(), false));
}

TEST_F (PersistentProps, objectsOfOneProcessDoNotOverwriteEachOther)
{
    {
        MVAppPersistentProps a;
        MVAppPersistentProps b;
        a.setString ("of_a", "1");
        a.flush();
        b.setString ("of_b", "2");
        EXPECT_EQ (a.getString ("of_b"), "2");
    }
    const MVAppPersistentProps props;
    EXPECT_EQ (props.getString ("of_a") + props.getString ("of_b"), "12");
}

TEST_F (PersistentProps, liesWhereTheEnvironmentSays)
{
    const auto config = folder.file ("config").getFullPathName();
    const auto userConfig = juce::File ("~/.config").getFullPathName();
    const juce::String name = "/Application Support/MorvaneLab_Sordelin_1.props";

    struct
    {
        const char* home;
        const char* config;
        juce::String expected;
    } const cases[] {
        { nullptr, config.toRawUTF8(), config + name },
        { "", config.toRawUTF8(), config + name },
        { nullptr, "relative/config", userConfig + name },
        { nullptr, nullptr, userConfig + name },
        { "/some/where", config.toRawUTF8(), "/some/where/MorvaneLab_Sordelin_1.props" },
    };

    for (const auto& each : cases)
    {
        const Variable homeOfCase ("SORDELIN_HOME", each.home);
        const Variable configOfCase ("XDG_CONFIG_HOME", each.config);
        EXPECT_EQ (MVAppPersistentProps().getFile().getFullPathName(), each.expected);
    }
}

TEST_F (PersistentProps, makesTheDataDirectoryAndTellsTheFirstRun)
{
    ScriptedPrompt prompt;
    MVAppPersistentProps props (MVAppPersistentProps::defaultApplicationName, "Application Support", prompt);
    bool existed = true;
    EXPECT_EQ (props.getDataDirectory (existed), home.getFullPathName());
    EXPECT_FALSE (existed);
    EXPECT_EQ (props.getDataDirectory (existed), home.getFullPathName());
    EXPECT_TRUE (existed);

    home.deleteRecursively();
    writeBytes (home, { 1 });
    EXPECT_EQ (props.getDataDirectory (existed), home.getFullPathName());
    EXPECT_FALSE (existed);
    EXPECT_TRUE (home.isDirectory());
    EXPECT_TRUE (prompt.told.empty());

    const auto blocked = folder.file ("file");
    writeBytes (blocked, { 1 });
    const Variable elsewhere ("SORDELIN_HOME", blocked.getChildFile ("sub").getFullPathName().toRawUTF8());
    MVAppPersistentProps stuck (MVAppPersistentProps::defaultApplicationName, "Application Support", prompt);
    EXPECT_TRUE (stuck.getDataDirectory (existed).isEmpty());
    EXPECT_FALSE (existed);
    EXPECT_EQ (prompt.told, std::vector<std::string> {
                                "Application Permissions Failure|Persistent application settings directory could "
                                "not be created, resulting in an unknown state.  Please check your file system "
                                "permissions and restart." });
}

TEST_F (PersistentProps, leadToTheListOfBanks)
{
    MVAppPersistentProps props;
    const auto usual = home.getChildFile ("Sordelin_Banks.mv_bankmgr");
    EXPECT_EQ (MVBankFileManager::findManagerFile (props), usual);

    writeBytes (home.getChildFile ("Sordelin_Banks_1.0.mv_bankmgr"), { 5 });
    MVBankFileManager::findManagerFile (props);
    EXPECT_EQ (readBytes (usual), Bytes { 5 });
    writeBytes (usual, { 6 });
    MVBankFileManager::findManagerFile (props);
    EXPECT_EQ (readBytes (usual), Bytes { 6 });

    const auto other = folder.file ("other");
    props.setString ("banks_path", other.getFullPathName());
    EXPECT_EQ (MVBankFileManager::findManagerFile (props), other.getChildFile ("Sordelin_Banks.mv_bankmgr"));
}

TEST_F (PersistentProps, keepWhatAnotherProcessHasStored)
{
    MVAppPersistentProps props;
    props.setString ("ours", "1");
    props.setString ("both", "1");
    props.flush();
    props.setString ("unsaved", "1");

    // Another one of the same file, which knows nothing of the first: so it is in two processes.
    const auto storeElsewhere = [&] (const char* key, const char* value)
    { MVPropertiesFile (propsFile, -1).setValue (key, value); };
    storeElsewhere ("theirs", "2");
    storeElsewhere ("both", "2");
    EXPECT_EQ (props.getString ("both"), "2");
    EXPECT_EQ (props.getString ("unsaved"), "1");
    // Set to what it was here before they changed it, it is a change all the same.
    storeElsewhere ("ours", "2");
    props.setString ("ours", "1");
    props.flush();

    const auto xml = juce::parseXML (propsFile);
    juce::String stored;
    for (const auto* element : xml->getChildIterator())
        stored << element->getStringAttribute ("name") << element->getStringAttribute ("val") << " ";
    EXPECT_EQ (stored, "ours1 both2 theirs2 unsaved1 ");
}

TEST_F (PersistentProps, keepADamagedFileAside)
{
    const auto backup = home.getChildFile ("MorvaneLab_Sordelin_1_bak.props");
    const std::string head = "<?xml version=\"1.0\"?><!-- by hand -->\n";
    std::string deep = head + "<PROPERTIES>";
    for (int i = 0; i < 200000; ++i)
        deep += "<a b='/>'>";
    const auto valueOf = [] (const std::string& value)
    { return "<PROPERTIES><VALUE name='k' " + value + "</PROPERTIES>"; };

    struct
    {
        const char* what;
        std::string text;
        const char* value;
        bool damaged;
    } const cases[] {
        { "attribute", head + valueOf ("val='a &lt;&#10;b'/>"), "a <\nb", false },
        { "element, as other programs store it", valueOf ("><x y='1'><z/></x></VALUE>"), "<x y=\"1\"><z/></x>", false },
        { "empty", "", "", false },
        { "cut short", head + "<PROPERTIES><VALUE name='k' val='v'/>", "", true },
        { "another document", "<x/>", "", true },
        { "no document", "k = v", "", true },
        { "nested without end", deep, "", true },
        { "entities that call one another",
          "<!DOCTYPE x [<!ENTITY a '&b;'><!ENTITY b '&a;'>]>" + valueOf ("val='&a;'/>"), "", true },
    };

    for (const auto& each : cases)
    {
        const Bytes bytes (each.text.begin(), each.text.end());
        home.deleteRecursively();
        home.createDirectory();
        writeBytes (propsFile, bytes);
        {
            MVAppPersistentProps props;
            EXPECT_EQ (props.getString ("k"), each.value) << each.what;
            EXPECT_EQ (readBytes (propsFile), bytes) << each.what;
            props.setString ("new", "1");
        }
        EXPECT_EQ (readBytes (backup), each.damaged ? bytes : Bytes()) << each.what;
        const MVAppPersistentProps again;
        EXPECT_EQ (again.getString ("k") + again.getString ("new"), juce::String (each.value) + "1") << each.what;
    }
}

TEST_F (PersistentProps, loseNothingWhenTheyCannotBeSaved)
{
    MVAppPersistentProps props;
    props.setString ("k", "1");
    props.flush();
    const Bytes before = readBytes (propsFile);
    props.setString ("k", juce::String::repeatedString ("x", 3000));
    for (const int room : { 0, 100 })
    {
        const FullDisk disk (room);
        props.flush();
        EXPECT_EQ (readBytes (propsFile), before);
    }
    props.flush();
    EXPECT_GT (propsFile.getSize(), 3000);
    EXPECT_EQ (home.getNumberOfChildFiles (juce::File::findFilesAndDirectories), 1);
}

TEST_F (PersistentProps, giveEveryTextBackAsItWas)
{
    const juce::String texts[] { "<a b='1'/>", "<?xml version=\"1.0\"?>\n<a>\n  <b/></a>\n",    " \t\r\n ", "",
                                 "&amp;\"'<>", juce::String::fromUTF8 ("\x01 \xf0\x9f\x8e\xb9") };
    {
        MVAppPersistentProps props;
        for (const auto& text : texts)
            props.setString ("key" + juce::String (text.hashCode()), text);
    }
    const MVAppPersistentProps props;
    for (const auto& text : texts)
        EXPECT_EQ (props.getString ("key" + juce::String (text.hashCode())), text);
}

TEST_F (PersistentProps, savesByItselfAfterThreeSeconds)
{
    const juce::ScopedJuceInitialiser_GUI messageManager;
    MVAppPersistentProps props;
    const auto start = juce::Time::getMillisecondCounterHiRes();
    double savedAfter = 0;

    // The loop ends when the file appears, or in vain after ten seconds.
    struct Watch : juce::Timer
    {
        std::function<void()> check;
        void timerCallback() override { check(); }
    } watch;
    watch.check = [&]
    {
        const double elapsed = juce::Time::getMillisecondCounterHiRes() - start;
        if (propsFile.existsAsFile() && savedAfter == 0)
            savedAfter = elapsed;
        if (savedAfter > 0 || elapsed > 10000)
            juce::MessageManager::getInstance()->stopDispatchLoop();
    };

    props.setString ("key", "value");
    watch.startTimer (20);
    juce::MessageManager::getInstance()->runDispatchLoop();
    EXPECT_GE (savedAfter, 2900);
}
