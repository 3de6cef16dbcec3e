#pragma once

#include <string>
#include <string_view>

namespace kolmera {

/// The suite's text scrambling, which keeps passwords in its files from being read at a glance; it protects nothing.
/// Works on the bytes of one whole field, padding included: every byte is shifted down by an amount that grows by 3
/// with every position and starts again after 7 positions (3, 6, ... 21, 3 ...), bytes below 0 going on from 255.
std::string scramble(std::string_view field);
/// Undoes `scramble`.
std::string unscramble(std::string_view field);

}  // namespace kolmera
