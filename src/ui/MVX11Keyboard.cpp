// SPDX-License-Identifier: GPL-3.0-or-later
#if defined(__linux__) || defined(__FreeBSD__)
#define JUCE_GUI_BASICS_INCLUDE_XHEADERS 1
#endif
#include "ui/MVX11Keyboard.h"

namespace morvanelab::x11
{

#if JUCE_LINUX || JUCE_BSD

namespace
{

using Lock = juce::XWindowSystemUtilities::ScopedXLock;

juce::X11Symbols& calls() { return *juce::X11Symbols::getInstance(); }
::Display* screen() { return juce::XWindowSystem::getInstance()->getDisplay(); }
::Window windowOf (const juce::ComponentPeer& peer) { return reinterpret_cast<::Window> (peer.getNativeHandle()); }

/** Windows of others may go at any moment, and a call on one that has gone would end the process of a host that has no
    handler of its own. */
class ErrorTrap
{
public:
    ErrorTrap()
    {
        calls().xSync (screen(), False);
        previous = calls().xSetErrorHandler ([] (::Display*, ::XErrorEvent*) { return 0; });
    }
    ~ErrorTrap()
    {
        calls().xSync (screen(), False);
        calls().xSetErrorHandler (previous);
    }
    ErrorTrap (const ErrorTrap&) = delete;
    ErrorTrap& operator= (const ErrorTrap&) = delete;

private:
    ::XErrorHandler previous;
};

/** 0 for a window that lies on the desktop, or has gone. */
::Window parentOf (::Window window)
{
    ::Window root = 0;
    ::Window parent = 0;
    ::Window* children = nullptr;
    unsigned count = 0;
    const bool known = calls().xQueryTree (screen(), window, &root, &parent, &children, &count) != 0;
    if (children != nullptr)
        calls().xFree (children);
    return known && parent != root ? parent : 0;
}

bool isManaged (::Window window)
{
    const auto state = calls().xInternAtom (screen(), "WM_STATE", False);
    ::Atom type = None;
    int format = 0;
    unsigned long items = 0;
    unsigned long left = 0;
    unsigned char* data = nullptr;
    const int result = calls().xGetWindowProperty (screen(), window, state, 0, 1, False, AnyPropertyType, &type,
                                                   &format, &items, &left, &data);
    if (data != nullptr)
        calls().xFree (data);
    return result == Success && type != None;
}

bool isInside (::Window inner, ::Window outer)
{
    while (inner != 0 && inner != outer)
        inner = parentOf (inner);
    return inner == outer;
}

bool canHaveFocus (::Window window)
{
    ::XWindowAttributes attributes {};
    return calls().xGetWindowAttributes (screen(), window, &attributes) != 0 && attributes.map_state == IsViewable;
}

} // namespace

juce::ModifierKeys getHeldModifiers()
{
    const Lock lock;
    ::Window root = 0;
    ::Window child = 0;
    int x = 0;
    int y = 0;
    unsigned mask = 0;
    auto* const display = screen();
    if (display == nullptr
        || calls().xQueryPointer (display, calls().xDefaultRootWindow (display), &root, &child, &x, &y, &x, &y, &mask)
               == False)
        return {};
    const auto flagIf = [mask] (unsigned bit, int flag) { return (mask & bit) != 0 ? flag : 0; };
    return juce::ModifierKeys (flagIf (ShiftMask, juce::ModifierKeys::shiftModifier)
                               | flagIf (ControlMask, juce::ModifierKeys::ctrlModifier)
                               | flagIf (Mod1Mask, juce::ModifierKeys::altModifier));
}

std::uintptr_t getFocusedWindow()
{
    const Lock lock;
    ::Window window = 0;
    int revertsTo = 0;
    calls().xGetInputFocus (screen(), &window, &revertsTo);
    return window;
}

std::uintptr_t findHostWindow (const juce::ComponentPeer& ours)
{
    if (screen() == nullptr)
        return 0;
    const Lock lock;
    const ErrorTrap trap;
    if (isManaged (windowOf (ours)))
        return 0;
    ::Window outermost = 0;
    for (auto window = parentOf (windowOf (ours)); window != 0; window = parentOf (window))
    {
        outermost = window;
        if (isManaged (window))
            break;
    }
    return outermost;
}

void giveFocusBack (const juce::ComponentPeer& ours, std::uintptr_t host, std::uintptr_t preferred)
{
    const Lock lock;
    const ErrorTrap trap;
    ::Window target = preferred;
    const bool isWindow = target != None && target != PointerRoot;
    if (target == None || (isManaged (host) && ! (isWindow && isInside (target, host))))
        target = host;
    if (target != PointerRoot && (! canHaveFocus (target) || isInside (target, windowOf (ours))))
        target = host;
    if (target == PointerRoot || canHaveFocus (target))
        calls().xSetInputFocus (screen(), target, RevertToParent, CurrentTime);
}

void setKeysHeard (const juce::ComponentPeer& ours, bool heard)
{
    const Lock lock;
    ::XWindowAttributes attributes {};
    if (calls().xGetWindowAttributes (screen(), windowOf (ours), &attributes) == 0)
        return;
    constexpr long keys = KeyPressMask | KeyReleaseMask;
    const long mask = heard ? attributes.your_event_mask | keys : attributes.your_event_mask & ~keys;
    if (mask != attributes.your_event_mask)
        calls().xSelectInput (screen(), windowOf (ours), mask);
}

#else

juce::ModifierKeys getHeldModifiers() { return juce::ModifierKeys::getCurrentModifiersRealtime(); }
std::uintptr_t getFocusedWindow() { return 0; }
std::uintptr_t findHostWindow (const juce::ComponentPeer&) { return 0; }
void giveFocusBack (const juce::ComponentPeer&, std::uintptr_t, std::uintptr_t) {}
void setKeysHeard (const juce::ComponentPeer&, bool) {}

#endif

} // namespace morvanelab::x11
