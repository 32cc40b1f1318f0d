#include "KesraNTC/platform/posix/text/private/Uhc.h"

#include "KesraNTC/platform/posix/text/private/UhcBestFit.h"
#include "KesraNTC/platform/posix/waiting/private/Futex.h"

#include <iconv.h>
#include <mutex>

using Kesra::FutexLock;

namespace
{
constexpr unsigned FirstLead = 0x81;
constexpr unsigned FirstTrail = 0x41;
constexpr unsigned LastByte = 0xFE;

// Windows gives the two user-defined rows of the page, and the single bytes 0x80 and 0xFF, a place in
// Unicode.
constexpr unsigned UserRows[2] = {0xC9, 0xFE};
constexpr unsigned FirstUserTrail = 0xA1;
constexpr unsigned UserRowSize = 94;
constexpr char16_t FirstUserWide = 0xE000;
constexpr char16_t WideOfFF = 0xF8F7;

// Converting character by character through iconv would cost a call for each; the page fits two tables,
// filled at the first use.
class Tables
{
public:
    /// What needs no converter.
    Tables();
    void Add(iconv_t converter);

    char16_t Wide[LastByte - FirstLead + 1][LastByte - FirstTrail + 1] = {};
    std::uint16_t Code[0x10000] = {};

private:
    void Map(unsigned code, char16_t wide);
};

Tables::Tables()
{
    for (const Kesra::Uhc::BestFit& fit : Kesra::Uhc::BestFits)
        Code[fit.Wide] = fit.Code;
    Code[0x80] = 0x80;
    Code[WideOfFF] = 0xFF;
    for (unsigned row = 0; row < 2; ++row)
        for (unsigned i = 0; i < UserRowSize; ++i)
            Map(UserRows[row] << 8 | (FirstUserTrail + i),
                static_cast<char16_t>(FirstUserWide + row * UserRowSize + i));
}

void Tables::Add(iconv_t converter)
{
    for (unsigned code = FirstLead << 8; code <= (LastByte << 8 | LastByte); ++code) {
        char bytes[2] = {static_cast<char>(code >> 8), static_cast<char>(code & 0xFF)};
        char16_t wide = 0;
        char* from = bytes;
        char* to = reinterpret_cast<char*>(&wide);
        std::size_t fromLeft = sizeof bytes;
        std::size_t toLeft = sizeof wide;
        if ((code & 0xFF) >= FirstTrail && (code & 0xFF) <= LastByte &&
            iconv(converter, &from, &fromLeft, &to, &toLeft) == 0 && fromLeft == 0 && toLeft == 0)
            Map(code, wide);
        iconv(converter, nullptr, nullptr, nullptr, nullptr);
    }
}

void Tables::Map(unsigned code, char16_t wide)
{
    Wide[(code >> 8) - FirstLead][(code & 0xFF) - FirstTrail] = wide;
    Code[wide] = static_cast<std::uint16_t>(code);
}

/// Null while the system has no converter: short of descriptors or memory it may have one later.
const Tables* FillWholePage()
{
    static FutexLock lock;
    static Tables whole;
    static bool isWhole = false;
    const std::lock_guard guard(lock);
    if (isWhole)
        return &whole;
    const iconv_t converter = iconv_open("UTF-16LE", "CP949");
    if (converter == reinterpret_cast<iconv_t>(-1))
        return nullptr;
    whole.Add(converter);
    iconv_close(converter);
    isWhole = true;
    return &whole;
}

const Tables& Page()
{
    static std::atomic<const Tables*> wholePage{nullptr};
    const Tables* page = wholePage.load(std::memory_order_acquire);
    if (page != nullptr)
        return *page;
    static const Tables little;
    page = FillWholePage();
    if (page == nullptr)
        return little;
    wholePage.store(page, std::memory_order_release);
    return *page;
}
} // namespace

namespace Kesra::Uhc
{
char16_t ToWide(unsigned int code)
{
    if (code <= 0x80)
        return static_cast<char16_t>(code);
    if (code == 0xFF)
        return WideOfFF;
    const unsigned lead = code >> 8;
    const unsigned trail = code & 0xFF;
    if (lead < FirstLead || lead > LastByte || trail < FirstTrail || trail > LastByte)
        return Unmapped;
    return Page().Wide[lead - FirstLead][trail - FirstTrail];
}

std::uint16_t FromWide(char16_t wide)
{
    return wide < 0x80 ? static_cast<std::uint16_t>(wide) : Page().Code[wide];
}
} // namespace Kesra::Uhc
