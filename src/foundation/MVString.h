// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVSmartPtr.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace morvanelab
{

class MVRiffPacker;

/** A growable single-byte text, zero-terminated once anything was stored. No lock of its own; it allocates, so it
    is kept out of the audio thread. Positions and counts are bytes; out-of-range ones never read or write. */
class MVString
{
public:
    MVString() = default;
    /** An empty text in a buffer of that many bytes. */
    explicit MVString (int capacityInBytes);
    MVString (const char* initialText);
    explicit MVString (std::string_view initialText);
    MVString (const MVString& other);
    MVString (MVString&& other) noexcept;
    MVString& operator= (const MVString& other);
    MVString& operator= (MVString&& other) noexcept;
    virtual ~MVString();

    virtual const char* className() const { return "MVString"; }
    MVSmartPtr<MVString> cloneSmart() const;
    virtual MVString* clone() const { return new MVString (*this); }

    /** A new chunk with that id. A text that is not empty becomes its child 'str ', without terminator. */
    MVSmartPtr<MVRiffPacker> packRiff (std::uint32_t chunkId) const;
    /** Takes the payload of the first child 'str '; without one the text becomes empty. */
    void unpackRiff (const MVRiffPacker& packer);

    /** Copies at most size - 1 bytes and a terminator into buffer. Returns the bytes copied. */
    int copyTo (char* buffer, int size) const;
    /** The text, never null: "" while nothing was stored. */
    const char* text() const { return data != nullptr ? data : ""; }
    std::string_view view() const { return { text(), static_cast<std::size_t> (used) }; }
    std::string toStdString() const { return std::string (view()); }
    int length() const { return used; }
    int getCapacity() const { return capacity; }
    bool isEmpty() const { return used < 1; }
    /** Whether a buffer exists. */
    bool isNull() const { return data == nullptr; }

    /** Blanks and tabs, one optional '-', then digits to the end; anything else gives 0. Overflow wraps. */
    int toInt() const { return static_cast<int> (static_cast<std::uint32_t> (parseDigits())); }
    std::int64_t toInt64() const { return static_cast<std::int64_t> (parseDigits()); }
    /** As atof, always with a decimal point, whatever the locale. */
    double toDouble() const;

    /** The byte at index; 0 out of range. */
    char charAt (int index) const;
    /** A copy of count bytes from start; empty if they are not all there. */
    MVString substring (int start, int count) const;
    /** A copy that holds only bytes 32 to 126 and newlines. */
    MVString printableOnly() const;
    /** A copy with A to Z lowered. */
    MVString lowerCase() const;

    /** Signed bytes decide at the first difference; a prefix is the lesser. */
    bool lessThan (const MVString& other) const;
    bool notLessThan (const MVString& other) const { return ! lessThan (other); }
    /** Same text. A text that never had a buffer equals nothing, not even "". */
    bool equals (const char* other) const;
    bool equals (const MVSmartPtr<MVString>& other) const;
    bool equals (const MVString& other) const;
    /** Whether other stands at position; false if either has no buffer or other would run past the end. */
    bool matchesAt (const char* other, int position) const;
    /** First position of byte at or after from, or -1. */
    int indexOf (char byte, int from) const;
    /** First position where needle stands, or -1; 0 for an empty needle. Only the needle is lowered; a byte here
        matches if it is equal or 32 below, so '@' here matches a grave accent there. */
    int indexOfIgnoreCase (const MVString& needle) const;

    void append (const char* bytes, int count);
    void append (const MVSmartPtr<MVString>& other);
    void append (const MVString& other) { append (other.text(), other.length()); }
    void append (const char* other);
    void append (char byte);

    /** Only shortens. */
    void truncate (int count);

    void assign (const MVSmartPtr<MVString>& other);
    void assign (const MVString& other);
    /** Null or a count below 1 empties the text and keeps the buffer. */
    void assign (const char* bytes, int count);
    void assign (const char* other);
    void assign (std::string_view other) { assign (other.data(), static_cast<int> (other.size())); }

    /** If count + 1 is above the capacity, moves to a buffer of count + 1 bytes and notes count as capacity. */
    void reserve (int count);

    friend bool operator<(const MVString& a, const MVString& b) { return a.lessThan (b); }
    /** Same bytes; here an empty text equals one that was never stored. */
    friend bool operator== (const MVString& a, const MVString& b) { return a.view() == b.view(); }
    friend bool operator== (const MVString& a, const char* b) { return a.view() == b; }

private:
    std::uint64_t parseDigits() const;
    void makeEmpty();
    bool ownsAddress (const char* bytes) const;

    char* data = nullptr;
    int capacity = 0;
    int used = 0;
};

} // namespace morvanelab
