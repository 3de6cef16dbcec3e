#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace kolmera {

/// SHA-256 of bytes that come in pieces.
class Sha256 {
  public:
    Sha256();
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;
    ~Sha256();

    void add(std::string_view bytes);
    /// The digest of all that was added; the last call. Empty where the library refuses to compute it.
    [[nodiscard]] std::string hexadecimal();

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace kolmera
