#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/engine/value.h"

namespace kolmera {

// Values as bytes, for files of this program that live as long as it runs.

void appendWhole(std::string& bytes, std::int64_t number);
void appendValue(std::string& bytes, const Value& value);

/// Takes the bytes apart again, in the order in which they were appended.
class ValueBytes {
  public:
    explicit ValueBytes(std::string_view bytes) : rest_(bytes) {}

    [[nodiscard]] bool atEnd() const { return rest_.empty(); }
    std::int64_t whole();
    Value value();

  private:
    std::string_view take(std::size_t length);

    std::string_view rest_;
};

}  // namespace kolmera
