#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

namespace kolmera {

/// A connect string: what goes to the driver manager, and how long the server has to answer. "LoginTimeout=n" and
/// "QueryTimeout=n" (seconds, 0 for no limit; letter case does not count) are ours and do not go on; drivers keep such
/// limits in ways of their own, or not at all.
struct ConnectString {
    explicit ConnectString(std::string_view text);

    std::string forDriver;
    std::chrono::seconds login{10};   ///< until the connection is there
    std::chrono::seconds answer{60};  ///< of one statement, with all its rows
};

/// The parts "key=value" of a connect string; a value in braces, which stay, may hold semicolons.
void forEachPart(std::string_view connectString,
                 const std::function<void(std::string_view key, std::string_view value)>& part);

}  // namespace kolmera
