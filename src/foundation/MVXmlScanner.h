// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVXmlTag.h"

#include <array>
#include <cstdint>
#include <limits>
#include <string_view>

namespace morvanelab
{

/** Finds tags and child elements in a text, without making objects of them. It never fails hard: what it meets is
    noted as a fault, after which it finds nothing more. The text must outlive it and stay below 2 GiB. */
class MVXmlScanner
{
public:
    /** Bytes of an attribute's name and value with their terminators. */
    static constexpr int attributeNameSize = 64;
    static constexpr int valueSize = 4096;

    enum class Fault
    {
        none,
        attributeNameTooLong,
        valueTooLong,
        outOfSteps
    };

    /** A child element: its tag, where the ">" of its opening tag stands, and its inner text as positions. */
    struct Child
    {
        MVXmlTag tag;
        int tagEnd = 0;
        int begin = 0;
        int end = 0;
    };

    explicit MVXmlScanner (std::string_view scannedText,
                           std::int64_t mostSteps = std::numeric_limits<std::int64_t>::max())
        : text (scannedText), size (static_cast<int> (scannedText.size())), stepsLeft (mostSteps)
    {
    }

    /** Reads the tag at position and returns where its ">" stands; 0 if the text ends before, or at a fault. */
    int readTag (int position, MVXmlTag& tag);
    /** Goes on to the next child at the top level of the text. False if there is none, or at a fault. */
    bool nextChild (Child& child);

    Fault getFault() const { return fault; }
    std::int64_t getStepsLeft() const { return stepsLeft; }

private:
    /** What the machine is reading. */
    enum class State
    {
        beforeName,
        kind,
        name,
        afterName,
        beforeAttribute,
        attributeName,
        afterAttributeName,
        beforeEquals,
        beforeValue,
        value,
        afterValue
    };

    /** A zero-terminated text of at most Size - 1 bytes. */
    template <int Size>
    struct Buffer
    {
        Buffer() { clear(); }

        /** False if there is no room. */
        bool add (char byte)
        {
            if (length >= Size - 1)
                return false;
            bytes[static_cast<std::size_t> (length++)] = byte;
            bytes[static_cast<std::size_t> (length)] = '\0';
            return true;
        }

        void clear()
        {
            length = 0;
            bytes[0] = '\0';
        }

        std::array<char, Size> bytes;
        int length = 0;
    };

    /** One step of the machine. Whether the byte is used up, else it goes into the next step too. */
    bool take (char byte, MVXmlTag& tag);
    bool takeOfTagName (char byte, MVXmlTag& tag);
    bool takeOfAttribute (char byte, MVXmlTag& tag);
    bool leaveFor (State next, bool byteIsUsed);
    template <int Size>
    bool addTo (Buffer<Size>& buffer, char byte, Fault faultIfFull);

    bool findTag();
    void findEndOf (Child& child);

    std::string_view text;
    int size = 0;
    std::int64_t stepsLeft;
    Fault fault = Fault::none;
    State state = State::beforeName;
    Buffer<attributeNameSize> attributeName;
    Buffer<valueSize> value;
    /** Where the search for children goes on, and opening less closing tags up to there. */
    int position = 0;
    int depth = 0;
};

} // namespace morvanelab
