#pragma once

#include <chrono>
#include <sstream>
#include <string>

/// Tells what happens, one line each with the seconds since the beginning. Lines hold UTF-8.
class Narrator
{
public:
    void Heading(const std::string& title);
    void Line(const std::string& who, const std::string& what);
    double Seconds() const;

private:
    const std::chrono::steady_clock::time_point Beginning = std::chrono::steady_clock::now();
};

/// Puts words and numbers together.
template <class... Parts> std::string Words(const Parts&... parts)
{
    std::ostringstream text;
    (text << ... << parts);
    return text.str();
}
