#include "KesraNTC/base/CDebug.h"

#include "KesraNTC/base/BoundedFormat.h"
#include "KesraNTC/base/Korean.h"
#include "KesraNTC/platform/Platform.h"

#include <cstdarg>
#include <cstring>
#include <ctime>
#include <mutex>
#include <string>

using namespace Kesra;

namespace
{

constexpr std::size_t MessageRoom = 1024;
constexpr std::size_t FileNameRoom = 256;

// Guards DiskFile; besides, appends of two streams at once may overwrite each other on Windows.
std::mutex DiskFileLock;

std::string TodaysFileName()
{
    const std::time_t now = std::time(nullptr);
    std::tm today{};
    localtime_s(&today, &now);
    char name[FileNameRoom] = {};
    std::snprintf(name, sizeof name, "KESRA_NETWORK_LOG/%d월%d일.log"_949, today.tm_mon + 1, today.tm_mday);
    return name;
}

// The bytes that a text-mode stream of Windows makes of a line, the same on every platform.
std::string WithCarriageReturns(const char* line)
{
    std::string text;
    text.reserve(std::strlen(line) + 8);
    for (; *line != '\0'; ++line) {
        if (*line == '\n')
            text += '\r';
        text += *line;
    }
    return text + "\r\n";
}

} // namespace

std::FILE* CDebug::DiskFile = nullptr;

CDebug::CDebug() = default;
CDebug::CDebug(const CDebug&) = default;
CDebug& CDebug::operator=(const CDebug&) = default;
CDebug::~CDebug() = default;

void CDebug::InitDebugMsg() {}

void CDebug::AppendDebugMsg(const char* format, ...)
{
    char message[MessageRoom];
    std::va_list arguments;
    va_start(arguments, format);
    BoundedFormat(message, format, arguments);
    va_end(arguments);
    AppendLine(message);
}

void CDebug::AppendLine(const char* line)
{
    const std::string text = WithCarriageReturns(line);
    const std::string name = TodaysFileName();
    const std::lock_guard<std::mutex> writing(DiskFileLock);
    // Nearly always it is there already; an append that fails for any other reason tells nobody.
    static_cast<void>(_mkdir("KESRA_NETWORK_LOG"));
    DiskFile = std::fopen(name.c_str(), "ab");
    if (DiskFile == nullptr)
        return;
    std::fwrite(text.data(), 1, text.size(), DiskFile);
    std::fclose(DiskFile);
}
