#include "KesraNTC/platform/posix/automation/Variant.h"
#include "KesraNTC/platform/posix/automation/private/DateText.h"

INT DosDateTimeToVariantTime(USHORT dosDate, USHORT dosTime, DOUBLE* variantTime)
{
    const int day = dosDate & 0x1F;
    const int month = dosDate >> 5 & 0xF;
    const int second = (dosTime & 0x1F) * 2;
    const int minute = dosTime >> 5 & 0x3F;
    const int hour = dosTime >> 11;
    if (second > 59 || minute > 59 || hour > 23)
        return FALSE;

    // Day 0 and days after the end of a month are counted on from its first day.
    Kesra::DateFields fields{1980 + (dosDate >> 9), static_cast<unsigned>(month), 1, 0};
    DATE date = 0;
    if (fields.Year > 2099 || !Kesra::DateFromFields(fields, date))
        return FALSE;
    *variantTime = date + day - 1 + ((hour * 60 + minute) * 60 + second) / 86'400.0;
    return TRUE;
}
