#pragma once

#include <functional>
#include <string_view>

namespace kolmera::jet {

/// Reads the Access-format file of that name and says in messages (platform/jet/jetmessages.h) what is in it. A damaged
/// file may end the process.
void tellJetFile(const char* file, const std::function<void(std::string_view)>& say);

}  // namespace kolmera::jet
