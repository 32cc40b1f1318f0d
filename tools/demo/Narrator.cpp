#include "tools/demo/Narrator.h"

#include <cstdio>

void Narrator::Heading(const std::string& title)
{
    std::printf("\n%s\n", title.c_str());
}

void Narrator::Line(const std::string& who, const std::string& what)
{
    std::printf("%6.3f  %-5s %s\n", Seconds(), who.c_str(), what.c_str());
    std::fflush(stdout);
}

double Narrator::Seconds() const
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - Beginning).count();
}
