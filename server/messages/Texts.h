#pragma once

#include <string>
#include <string_view>

namespace Kesra
{

/// Texts travel in code page 949; people's terminals and files hold UTF-8. What one side does not have
/// becomes a question mark.
std::string WireText(std::string_view utf8);
std::string Utf8Text(std::string_view wire);
/// A text of a peer's as one line of the log shows it: cut when it is long, and no control character reaches
/// a terminal.
std::string LogText(std::string_view wire);

} // namespace Kesra
