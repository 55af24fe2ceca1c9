// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/WindowRig.h"

#include "window/ScreenMouse.h"

#include <chrono>
#include <cstdlib>
#include <ostream>
#include <stdexcept>
#include <thread>
#include <typeinfo>

namespace morvanelab::test
{

namespace
{

constexpr double pendingSeconds = 10.0;
constexpr int settleFrames = 4 * 512;
constexpr int betweenClicks = 2000; ///< ms
constexpr int betweenMoves = 20;

/** Calls visit for a component's visible children, then theirs, until it returns true. The one in front comes
    first. */
bool walk (juce::Component& parent, const std::function<bool (juce::Component&)>& visit)
{
    for (int i = parent.getNumChildComponents(); --i >= 0;)
    {
        auto& child = *parent.getChildComponent (i);
        if (child.isVisible() && (visit (child) || walk (child, visit)))
            return true;
    }
    return false;
}

/** The same for all windows of the process, since menus may have windows of their own. */
void walkAll (const std::function<bool (juce::Component&)>& visit)
{
    auto& desktop = juce::Desktop::getInstance();
    for (int i = desktop.getNumComponents(); --i >= 0;)
        if (walk (*desktop.getComponent (i), visit))
            return;
}

juce::AccessibilityHandler* asMenuItem (juce::Component& component)
{
    auto* handler = component.getAccessibilityHandler();
    const bool isItem = handler != nullptr && handler->getRole() == juce::AccessibilityRole::menuItem
                        && &handler->getComponent() == &component;
    return isItem ? handler : nullptr;
}

} // namespace

void HostLog::add (const std::string& event)
{
    const std::lock_guard<std::mutex> scope (lock);
    if (events.empty() || events.back() != event)
        events.push_back (event);
}

void HostLog::audioProcessorParameterChanged (juce::AudioProcessor*, int index, float newValue)
{
    add ("value " + std::to_string (index));
    const std::lock_guard<std::mutex> scope (lock);
    value = newValue;
}

void HostLog::audioProcessorParameterChangeGestureBegin (juce::AudioProcessor*, int index)
{
    add ("begin " + std::to_string (index));
}

void HostLog::audioProcessorParameterChangeGestureEnd (juce::AudioProcessor*, int index)
{
    add ("end " + std::to_string (index));
}

Texts HostLog::take()
{
    const std::lock_guard<std::mutex> scope (lock);
    return std::exchange (events, {});
}

float HostLog::lastValue() const
{
    const std::lock_guard<std::mutex> scope (lock);
    return value;
}

void PrintTo (const ShownBox& box, std::ostream* out)
{
    *out << "\"" << box.title << "\": \"" << box.text << "\"";
    for (const auto& button : box.buttons)
        *out << " [" << button << "]";
}

WindowRig::WindowRig() : screen (hasDisplay() ? std::make_unique<host::HostDisplay>() : nullptr)
{
    // Banks are taken in by path: this one comes before the rig's own.
    writeCountBank (rig.bankFolder().getChildFile ("Counts.mv_onbank").getFullPathName().toStdString());
    restart();
}

WindowRig::~WindowRig()
{
    close();
    instance.reset();
}

bool WindowRig::hasDisplay()
{
    const char* display = std::getenv ("DISPLAY");
    return display != nullptr && *display != 0;
}

void WindowRig::restart()
{
    close();
    instance.reset();
    instance = rig.open();
    instance->processor.addListener (&log);
    log.take();
}

void WindowRig::load (int bank, int slot)
{
    if (! core().loadPatch (bank, slot))
        throw std::runtime_error ("the slot could not be loaded");
    settle();
}

void WindowRig::settle()
{
    plugin().render (settleFrames);
    core().withEngine ([] (MVRenderEngine& engine) { engine.waitForPendingWork (pendingSeconds); });
    plugin().render (settleFrames);
    pumpMessages();
}

void WindowRig::send (const juce::MidiMessage& message)
{
    juce::MidiBuffer midi;
    midi.addEvent (message, 0);
    plugin().render (512, midi);
    pumpMessages();
}

void WindowRig::open (bool onScreen)
{
    editor.reset (processor().createEditor());
    if (onScreen)
    {
        editor->addToDesktop (0);
        editor->setTopLeftPosition (0, 0);
    }
    editor->setVisible (true);
    run (0.05);
    if (onScreen)
        takeScreenFocus();
}

void WindowRig::takeScreenFocus()
{
    // As after a real click, without which menus close by themselves.
    peer().grabFocus();
    if (! runUntil ([this] { return peer().isFocused(); }))
        throw std::runtime_error ("the screen does not give the keyboard to the window");
    // The toolkit may have read the news of that without looking at it: it looks when there is more to read.
    nudgePointer (screen->native());
    run (0.05);
    juce::Component::unfocusAllComponents();
}

void WindowRig::close()
{
    editor.reset();
    juce::ModifierKeys::currentModifiers = {}; // a button that was down goes up elsewhere
}

juce::Component* WindowRig::look (const juce::String& id)
{
    juce::Component* found = nullptr;
    if (editor != nullptr)
        walk (*editor,
              [&] (juce::Component& component)
              {
                  if (component.getComponentID() == id)
                      found = &component;
                  return found != nullptr;
              });
    return found;
}

juce::Component& WindowRig::find (const juce::String& id)
{
    auto* found = look (id);
    if (found == nullptr)
        throw std::runtime_error (("nothing shows that is called " + id).toStdString());
    return *found;
}

juce::Rectangle<int> WindowRig::placeOf (const juce::String& id)
{
    auto& control = find (id);
    return view().getLocalArea (control.getParentComponent(), control.getBounds());
}

ShownBox WindowRig::box()
{
    pumpMessages();
    ShownBox shown;
    auto* box = look ("BOX");
    if (box == nullptr)
        return shown;
    shown.title = box->getName().toStdString();
    walk (*box,
          [&] (juce::Component& component)
          {
              if (auto* button = dynamic_cast<juce::Button*> (&component))
                  shown.buttons.insert (shown.buttons.begin(), button->getButtonText().toStdString());
              else if (auto* text = dynamic_cast<juce::TextEditor*> (&component);
                       component.getComponentID() == "BOX TEXT")
                  shown.text = text->getText().toStdString();
              return false;
          });
    return shown;
}

juce::ComponentPeer& WindowRig::peer()
{
    auto* found = editor != nullptr ? editor->getPeer() : nullptr;
    if (found == nullptr)
        throw std::runtime_error ("the window is not on the screen");
    return *found;
}

juce::Point<float> WindowRig::inWindow (juce::Component& component, juce::Point<int> where)
{
    return editor->getLocalPoint (&component, where).toFloat();
}

void WindowRig::mouse (juce::Point<float> place, juce::ModifierKeys buttons)
{
    mousePlace = place;
    juce::ModifierKeys::currentModifiers = buttons;
    peer().handleMouseEvent (juce::MouseInputSource::InputSourceType::mouse, place, buttons,
                             juce::MouseInputSource::defaultPressure, juce::MouseInputSource::defaultOrientation,
                             mouseTime);
    mouseTime += betweenMoves;
}

void WindowRig::clickAt (juce::Component& component, juce::Point<int> where, int times)
{
    const juce::Component::SafePointer<juce::Component> target (&component);
    mouseTime += betweenClicks;
    for (int i = 0; i < times && target != nullptr; ++i)
    {
        const auto place = inWindow (component, where);
        mouse (place, {});
        mouse (place, juce::ModifierKeys::leftButtonModifier);
        mouse (place, {});
    }
    run (0.02);
}

void WindowRig::click (juce::Component& component, juce::ModifierKeys button)
{
    mouseTime += betweenClicks;
    const auto place = inWindow (component, component.getLocalBounds().getCentre());
    mouse (place, {});
    mouse (place, button);
    mouse (place, {});
    run (0.02);
}

void WindowRig::focus (const juce::String& id)
{
    click (id);
    waitForFocus (id);
}

std::string WindowRig::focused()
{
    const auto* component = juce::Component::getCurrentlyFocusedComponent();
    return component == nullptr ? std::string()
                                : (component->getComponentID() + ", " + component->getName() + ", ").toStdString()
                                      + typeid (*component).name();
}

void WindowRig::waitForFocus (const juce::String& id)
{
    if (! runUntil ([&] { return find (id).hasKeyboardFocus (true) && peer().isFocused(); }))
        throw std::runtime_error (("the keyboard does not go to " + id).toStdString());
}

void WindowRig::drag (juce::Component& component, juce::Point<int> by)
{
    dragFrom (component, component.getLocalBounds().getCentre(), by);
}

void WindowRig::dragFrom (juce::Component& component, juce::Point<int> from, juce::Point<int> by)
{
    constexpr int steps = 5;
    mouseTime += betweenClicks;
    const auto start = inWindow (component, from);
    const auto way = inWindow (component, from + by) - start;
    mouse (start, {});
    mouse (start, juce::ModifierKeys::leftButtonModifier);
    for (int step = 1; step <= steps; ++step)
        mouse (start + way * (static_cast<float> (step) / steps), juce::ModifierKeys::leftButtonModifier);
}

void WindowRig::drop()
{
    mouse (mousePlace, {});
    run (0.02);
}

void WindowRig::type (const juce::String& text)
{
    for (const auto character : text)
        peer().handleKeyPress (juce::KeyPress (static_cast<int> (character), {}, character));
    run (0.02);
}

void WindowRig::press (int keyCode)
{
    peer().handleKeyPress (juce::KeyPress (keyCode));
    run (0.02);
}

Texts WindowRig::menu()
{
    Texts items;
    walkAll (
        [&] (juce::Component& component)
        {
            if (auto* item = asMenuItem (component))
            {
                const bool ticked = item->getCurrentState().isChecked();
                const bool usable = item->getActions().contains (juce::AccessibilityActionType::press);
                items.insert (items.begin(),
                              (item->getTitle() + (ticked ? " *" : "") + (usable ? "" : " -")).toStdString());
            }
            return false;
        });
    return items;
}

void WindowRig::choose (const juce::String& text)
{
    juce::AccessibilityHandler* found = nullptr;
    walkAll (
        [&] (juce::Component& component)
        {
            auto* item = asMenuItem (component);
            if (item != nullptr && item->getTitle() == text)
                found = item;
            return found != nullptr;
        });
    if (found == nullptr)
        throw std::runtime_error (("no menu shows that has " + text).toStdString());
    const bool opensAnother = found->getActions().contains (juce::AccessibilityActionType::showMenu);
    found->getActions().invoke (juce::AccessibilityActionType::press);
    // A menu beside this one goes again by itself, since no mouse is over it.
    if (! opensAnother)
        run (0.1);
}

void WindowRig::run (double seconds)
{
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::duration<double> (seconds);
    do
    {
        pumpMessages();
        std::this_thread::sleep_for (std::chrono::milliseconds (2));
    } while (Clock::now() < end);
}

bool WindowRig::runUntil (const std::function<bool()>& condition, double seconds)
{
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::duration<double> (seconds);
    while (! condition())
    {
        if (Clock::now() > end)
            return false;
        run (0.01);
    }
    return true;
}

} // namespace morvanelab::test
