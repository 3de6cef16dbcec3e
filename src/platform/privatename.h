#pragma once

#include <string>

namespace kolmera {

/// 16 hexadecimal digits that nobody can foresee, for the name of a new file beside others: no other program uses the
/// name, and none can have prepared a link there.
std::string privateDigits();

}  // namespace kolmera
