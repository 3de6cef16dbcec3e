#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "platform/engine/value.h"

namespace kolmera {

/// The keys of a seek that is done for every record; their memory is kept from one record to the next. What `of`
/// returns is valid until it is called again.
class SeekKeys {
  public:
    std::span<const Value> of(std::string_view first) {
        assign(values_[0], first);
        return std::span(values_).first(1);
    }
    std::span<const Value> of(std::string_view first, std::string_view second) {
        assign(values_[0], first);
        assign(values_[1], second);
        return values_;
    }
    std::span<const Value> of(std::string_view first, std::int64_t second) {
        assign(values_[0], first);
        values_[1] = second;
        return values_;
    }

  private:
    static void assign(Value& value, std::string_view text) {
        if (auto* old = std::get_if<std::string>(&value)) {
            old->assign(text);
        } else {
            value = std::string(text);
        }
    }

    std::array<Value, 2> values_;
};

}  // namespace kolmera
