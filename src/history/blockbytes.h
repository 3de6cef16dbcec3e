#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/value.h"

namespace kolmera {

/// Bytes of a block of a run's record: whole numbers of 7 bits a byte, texts behind their length, values behind a byte
/// that says what they are.
class BlockWriter {
  public:
    void byte(std::uint8_t byte) { bytes_ += static_cast<char>(byte); }
    void number(std::uint64_t number);
    void signedNumber(std::int64_t number);
    void text(std::string_view text);
    /// A text that comes again and again: spelt out once a block, and counted from then on.
    void word(std::string_view word);
    void value(const Value& value);

    [[nodiscard]] const std::string& bytes() const { return bytes_; }
    [[nodiscard]] std::size_t size() const { return bytes_.size(); }
    [[nodiscard]] bool empty() const { return bytes_.empty(); }
    void clear();

    /// Where a writer stands; `back` takes back what has been written since.
    struct Mark {
        std::size_t bytes = 0;
        std::vector<std::string> words = {};
    };
    [[nodiscard]] Mark mark() const { return {bytes_.size(), words_}; }
    void back(const Mark& mark);
    /// The same when the block has been written out since: `written` begins with what stood there.
    void backInto(std::string written, const Mark& mark);

  private:
    std::string bytes_;
    std::vector<std::string> words_;
};

/// Reads them again. Throws kDamaged for bytes that nobody has written.
class BlockReader {
  public:
    explicit BlockReader(std::string_view bytes) : rest_(bytes) {}

    [[nodiscard]] bool atEnd() const { return rest_.empty(); }
    std::uint8_t byte();
    std::uint64_t number();
    std::int64_t signedNumber();
    std::string_view text();
    const std::string& word();
    Value value();
    /// Goes past a value.
    void skipValue();

  private:
    std::string_view take(std::uint64_t count);

    std::string_view rest_;
    std::vector<std::string> words_;
};

}  // namespace kolmera
