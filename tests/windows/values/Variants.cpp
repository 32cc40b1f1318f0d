#include "tests/windows/values/Values.h"

#include "tests/platform/VariantText.h"

#include <KesraNTC/KesraNTC.h>

#include <climits>
#include <list>

namespace
{
constexpr VARTYPE Types[] = {VT_EMPTY, VT_NULL, VT_I1,      VT_UI1,  VT_I2,   VT_UI2,  VT_I4,
                             VT_UI4,   VT_INT,  VT_UINT,    VT_I8,   VT_UI8,  VT_R4,   VT_R8,
                             VT_CY,    VT_DATE, VT_DECIMAL, VT_BOOL, VT_BSTR, VT_ERROR};

DECIMAL Decimal(unsigned long long low, unsigned high, int scale, bool isNegative)
{
    DECIMAL decimal{};
    decimal.Lo64 = low;
    decimal.Hi32 = high;
    decimal.scale = static_cast<BYTE>(scale);
    decimal.sign = isNegative ? DECIMAL_NEG : BYTE{0};
    return decimal;
}

_variant_t Typed(double value, VARTYPE type)
{
    return _variant_t(value, type);
}

std::list<_variant_t> Sources()
{
    std::list<_variant_t> sources;
    sources.emplace_back();
    for (const int value : {0, 1, -1, 127, 128, -129, 255, 256, 32768, 65535, 65536, INT_MAX, INT_MIN})
        sources.emplace_back(value);
    for (const long long value : {LLONG_MAX, LLONG_MIN, 4294967296LL})
        sources.emplace_back(value);
    for (const double value :
         {0.0, 0.5, 1.5, 2.5, -0.5, -1.5, 127.5, 1e10, 1e20, 123456.789, 0.1, 1.0 / 3, 1e-7, -1e300})
        sources.emplace_back(value);
    for (const float value : {0.1F, 16777216.0F, 3.4e38F})
        sources.emplace_back(value);
    for (const double value : {0.0, 1.25, -1.25, 45658.75, 2958465.5, 0.999999})
        sources.push_back(Typed(value, VT_DATE));
    sources.emplace_back(true);
    sources.emplace_back(Decimal(12345, 0, 2, false));
    sources.emplace_back(Decimal(12345, 0, 4, true));
    sources.emplace_back(Decimal(ULLONG_MAX, 0xFFFFFFFF, 0, false));
    sources.emplace_back(Decimal(5, 0, 28, false));
    sources.emplace_back(Decimal(0, 1, 28, true));
    for (const char* text : {"",
                             "0",
                             "1",
                             "-1",
                             " 42 ",
                             "1.75",
                             "2.75",
                             "-0.5",
                             "1e3",
                             "1E-3",
                             "255",
                             "256",
                             "True",
                             "False",
                             "abc",
                             "1,234",
                             "0x10",
                             "&H1F",
                             "79228162514264337593543950335",
                             "79228162514264337593543950336",
                             "0.1234567890123456789",
                             ".5",
                             "5.",
                             "+7",
                             "1 2",
                             "$1.50",
                             "(3)",
                             "3-",
                             "1e400",
                             "2026-03-01",
                             "3/1/2026 13:45:10",
                             "12:30",
                             "\xB0\xA1"})
        sources.emplace_back(text);
    return sources;
}

/// Converts as for a user in the United States, whatever language the system speaks.
void PrintConversions()
{
    for (const _variant_t& source : Sources())
        for (const VARTYPE type : Types)
            Print("variant " + std::to_string(source.vt) + " " + ValueText(source) + " as " +
                      std::to_string(type),
                  Converted(source, type));
}

/// The numbers and the whole numbers' texts are the same in every language.
void PrintWrapper()
{
    COLEVariant wrapper;
    for (const VARTYPE type : {VT_I2, VT_I4, VT_R4, VT_R8, VT_BSTR, VT_UI1, VT_DECIMAL})
        for (const int value : {0, 1, 255, -1, 70000}) {
            COLEVariant source(static_cast<long>(value), VT_I4);
            wrapper.ChangeType(type, source);
            Print("wrapper " + std::to_string(value) + " as " + std::to_string(type),
                  std::to_string(wrapper.vt) + " " + ValueText(wrapper));
        }
    const COLEVariant values[] = {COLEVariant(),
                                  COLEVariant(static_cast<unsigned char>(5)),
                                  COLEVariant(short{5}, VT_I2),
                                  COLEVariant(short{5}, VT_BOOL),
                                  COLEVariant(5L, VT_I4),
                                  COLEVariant(5L, VT_ERROR),
                                  COLEVariant(5.0F),
                                  COLEVariant(5.0),
                                  COLEVariant(COLEDateTime(5.0)),
                                  COLEVariant(_variant_t("5")),
                                  COLEVariant(_variant_t(Decimal(5, 0, 0, false)))};
    for (const COLEVariant& left : values) {
        std::string row;
        for (const COLEVariant& right : values)
            row += left == right ? '1' : '0';
        COLEVariant copy(left);
        copy = 7L;
        Print("wrapper " + std::to_string(left.vt) + " " + ValueText(left),
              row + " then " + std::to_string(copy.vt) + " " + ValueText(copy));
    }
}

void PrintEncodings()
{
    for (const _variant_t& source : Sources()) {
        CNTPacket packet;
        packet << static_cast<unsigned short>(1002) << static_cast<unsigned short>(0) << source;
        Print("packet of " + std::to_string(source.vt) + " " + ValueText(source),
              std::string(reinterpret_cast<const char*>(packet.GetBuf()), packet.GetBufSize()));
    }
}
} // namespace

void PrintVariants()
{
    PrintConversions();
    PrintWrapper();
    PrintEncodings();
}
