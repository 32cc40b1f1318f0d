#pragma once

#include <cstring>

/// A text of at most N bytes in the object itself: its N + 1 bytes, terminator included, are the whole
/// object. Owns nothing and copies as plain bytes.
template <int N> class CFixCharString
{
    static_assert(N > 0, "a text needs room");

public:
    /// Bytes that fit, terminator excluded.
    static constexpr int Capacity = N;

    /// The empty text.
    CFixCharString() = default;
    /// Takes the text up to its NUL, cut to N bytes; a null pointer counts as the empty text.
    CFixCharString(const char* text) { *this = text; }

    /// The same; the text may be a part of this one.
    CFixCharString& operator=(const char* text)
    {
        std::size_t length = 0;
        while (text && length < N && text[length])
            ++length;
        // Moved, for the text may be a part of this one.
        if (length)
            std::memmove(Text, text, length);
        std::memset(Text + length, 0, sizeof Text - length);
        return *this;
    }

    /// The text with its terminator.
    operator const char*() const { return Text; }
    /// The N + 1 bytes themselves; whoever writes here keeps a NUL in the last one.
    char* GetBuffer() { return Text; }

    /// Comparing takes the texts, not the addresses.
    friend bool operator==(const CFixCharString& left, const char* right)
    {
        return std::strcmp(left.Text, right ? right : "") == 0;
    }
    friend bool operator==(const CFixCharString& left, const CFixCharString& right)
    {
        return left == right.Text;
    }
    friend bool operator!=(const CFixCharString& left, const char* right) { return !(left == right); }
    friend bool operator!=(const CFixCharString& left, const CFixCharString& right)
    {
        return !(left == right);
    }

private:
    char Text[N + 1] = {};
};
