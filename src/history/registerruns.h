#pragma once

#include <string_view>

namespace kolmera {

/// How the definition of a run begins that wrote to a register, in place of a job's.
inline constexpr std::string_view kRegisterDefinition = R"({"register":)";

}  // namespace kolmera
