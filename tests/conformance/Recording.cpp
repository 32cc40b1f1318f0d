#include "tests/conformance/Recording.h"

#include <chrono>
#include <fstream>

namespace Kesra
{

void Recording::Own(unsigned short number, const std::string& forms, const Fields& fields)
{
    Add("own", number, fields, R"(, "forms": ")" + forms + R"(")");
}

void Recording::Add(const std::string& direction, unsigned short number, const Fields& fields,
                    const std::string& more)
{
    const std::lock_guard hold(Mutex);
    Lines += R"({"dir": ")" + direction + R"(", "number": )" + std::to_string(number) + R"(, "fields": )" +
             fields.Json() + more + "}\n";
    if (direction == "s2c")
        ++PushedCount[static_cast<MessageNumber>(number)];
    Changed.notify_all();
}

bool Recording::WaitForPushed(MessageNumber number, unsigned count, unsigned seconds)
{
    std::unique_lock hold(Mutex);
    return Changed.wait_for(hold, std::chrono::seconds(seconds),
                            [&] { return PushedCount[number] >= count; });
}

void Recording::Write(const std::filesystem::path& file) const
{
    const std::lock_guard hold(Mutex);
    std::ofstream(file, std::ios::binary) << Lines;
}

} // namespace Kesra
