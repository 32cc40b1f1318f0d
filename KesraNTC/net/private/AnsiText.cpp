#include "KesraNTC/net/private/AnsiText.h"

#include <climits>

namespace Kesra
{

namespace
{

int Checked(int length)
{
    if (length <= 0)
        _com_issue_error(E_OUTOFMEMORY);
    return length;
}

} // namespace

std::string AnsiFromBstr(BSTR text)
{
    if (text == nullptr)
        return {};
    // A text may hold NULs; what travels ends at the first.
    const int wide = static_cast<int>(std::char_traits<OLECHAR>::length(text));
    if (wide == 0)
        return {};
    const int size = Checked(WideCharToMultiByte(CP_ACP, 0, text, wide, nullptr, 0, nullptr, nullptr));
    std::string ansi(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_ACP, 0, text, wide, ansi.data(), size, nullptr, nullptr);
    return ansi;
}

BSTR BstrFromAnsi(std::string_view text)
{
    if (text.size() > INT_MAX)
        _com_issue_error(E_OUTOFMEMORY);
    const int size = static_cast<int>(text.size());
    const int wide = size == 0 ? 0 : Checked(MultiByteToWideChar(CP_ACP, 0, text.data(), size, nullptr, 0));
    const BSTR result = SysAllocStringLen(nullptr, static_cast<UINT>(wide));
    if (result == nullptr)
        _com_issue_error(E_OUTOFMEMORY);
    MultiByteToWideChar(CP_ACP, 0, text.data(), size, result, wide);
    return result;
}

} // namespace Kesra
