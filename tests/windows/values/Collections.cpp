#include "tests/windows/values/Values.h"

#include <KesraNTC/KesraNTC.h>

namespace
{
/// Long images are told by their length and a sum of their bytes.
std::string Image(const CPropCollection& properties)
{
    const std::vector<unsigned char> image = properties;
    if (image.size() <= 400)
        return std::string(image.begin(), image.end());
    unsigned long long sum = 14695981039346656037ull;
    for (const unsigned char byte : image)
        sum = (sum ^ byte) * 1099511628211ull;
    return std::to_string(image.size()) + " bytes of sum " + std::to_string(sum);
}

CString NameAt(int index)
{
    constexpr const char* Forms[] = {"name %d",    "NAME %d",    "\xB0\xA1 %d",
                                     "\xA3\xE1%d", "half%d\xB0", "\x81\x41%d"};
    CString name;
    name.Format(Forms[index % 6], index / 2);
    return name;
}

void Put(CPropCollection& properties, const char* name, int index)
{
    switch (index % 7) {
    case 0:
        properties.SetProperty(name, static_cast<long>(index * 1000));
        break;
    case 1:
        properties.SetProperty(name, index / 8.0);
        break;
    case 2:
        properties.SetProperty(name, "text \xB0\xA2");
        break;
    case 3:
        properties.SetProperty(name, index % 2 == 0);
        break;
    case 4:
        properties.SetProperty(name, _variant_t(index / 4.0, VT_DATE));
        break;
    case 5:
        properties.SetProperty(name, static_cast<unsigned char>(index & 0xFF));
        break;
    default:
        properties.SetProperty(name, _variant_t());
    }
}
} // namespace

void PrintCollections()
{
    CPropCollection properties;
    Print("empty collection", Image(properties));
    for (int i = 0; i < 600; ++i) {
        Put(properties, NameAt(i), i);
        if (i < 20 || i % 20 == 0)
            Print("collection of " + std::to_string(i + 1), Image(properties));
    }
    CPropCollection read;
    read = static_cast<std::vector<unsigned char>>(properties);
    Print("collection read back", Image(read));
    Sequence sequence;
    for (int round = 0; round < 50; ++round) {
        std::vector<unsigned char> image = properties;
        image.resize(sequence.Below(300) + 1);
        image[sequence.Below(static_cast<unsigned>(image.size()))] =
            static_cast<unsigned char>(sequence.Below(256));
        read = image;
        Print("broken image " + std::to_string(round), Image(read));
    }
}
