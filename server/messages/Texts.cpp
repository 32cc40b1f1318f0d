#include "server/messages/Texts.h"

#include "KesraNTC/platform/Platform.h"

#include <algorithm>
#include <vector>

namespace Kesra
{
namespace
{

constexpr UINT Korean = 949;
constexpr std::size_t LogTextLimit = 1000;

std::string Convert(std::string_view text, UINT from, UINT to)
{
    if (text.empty())
        return {};
    const int length = static_cast<int>(text.size());
    std::vector<WCHAR> wide(text.size());
    const int units = MultiByteToWideChar(from, 0, text.data(), length, wide.data(), length);
    std::string result(text.size() * 3, '\0');
    const int bytes = WideCharToMultiByte(to, 0, wide.data(), units, result.data(),
                                          static_cast<int>(result.size()), nullptr, nullptr);
    result.resize(static_cast<std::size_t>(bytes));
    return result;
}

} // namespace

std::string WireText(std::string_view utf8)
{
    return Convert(utf8, CP_UTF8, Korean);
}

std::string Utf8Text(std::string_view wire)
{
    return Convert(wire, Korean, CP_UTF8);
}

std::string LogText(std::string_view wire)
{
    const bool cut = wire.size() > LogTextLimit;
    std::string text = Utf8Text(wire.substr(0, LogTextLimit)) + (cut ? "..." : "");
    const auto control = [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; };
    std::replace_if(text.begin(), text.end(), control, '?');
    return text;
}

} // namespace Kesra
