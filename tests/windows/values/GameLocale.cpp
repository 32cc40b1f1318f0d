#include <clocale>
#include <mbctype.h>

// A game may have set a multibyte code page and a language of its own: no line may depend on them.
namespace
{
const bool IsSet = [] {
    _setmbcp(_MB_CP_SBCS);
    return std::setlocale(LC_ALL, "German") != nullptr;
}();
} // namespace
