#include "tests/torture/Outcome.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>
#include <sstream>
#include <string>
#include <sys/mman.h>

namespace Torture
{

void Blame(Outcome& outcome, const char* format, ...)
{
    if (outcome.IsFaulty.exchange(true))
        return;
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(outcome.Fault.data(), outcome.Fault.size(), format, arguments);
    va_end(arguments);
}

void AddNames(NameList& list, const char* names)
{
    std::istringstream added(names);
    for (std::string name; std::getline(added, name, ',');) {
        const std::string known = std::string(",") + list.data() + ",";
        const std::size_t used = std::strlen(list.data());
        if (known.find("," + name + ",") == std::string::npos)
            std::snprintf(list.data() + used, list.size() - used, "%s%s", used != 0 ? "," : "", name.c_str());
    }
}

void* MakeShared(std::size_t size)
{
    void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::bad_alloc();
    return memory;
}

} // namespace Torture
