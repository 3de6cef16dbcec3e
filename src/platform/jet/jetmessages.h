#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "platform/jet/jetcontent.h"

namespace kolmera::jet {

/// The messages of the reader, in its standard output: one byte that says what it is, its length (four bytes, the
/// lowest first), its content. Numbers have their lowest byte first; a text is its length in four bytes and UTF-8.
///
///     t  table      name, rows, columns (name, type, size, counter, standard, rule, required, properties),
///                   indexes (name, unique, columns), rule, properties
///     o  other      kind, name
///     b  beginning  of the rows of a table: its number
///     r  row        a cell for every column: one byte, and what it calls for
///     e  end        nothing may follow
///     f  failure    why the file is not read; nothing may follow
enum class Failure : std::uint8_t { Damaged, NotJet, NewerFormat };
inline constexpr std::uint8_t kFailures = 3;
inline constexpr std::size_t kLongestMessage = std::size_t{64} << 20;

std::string tableMessage(const Table& table);
std::string otherMessage(OtherObject kind, std::string_view name);
std::string beginningMessage(std::uint32_t table);
std::string rowMessage(const Row& row);
std::string endMessage();
std::string failureMessage(Failure failure);

/// Takes the bytes of a reader, who is not trusted: whatever is not as it should be throws PlatformError(kDamaged).
class MessageParser {
  public:
    explicit MessageParser(ContentListener& listener) : listener_(listener) {}

    /// Takes what has come, and tells the listener of the messages that are whole.
    void take(std::string_view bytes);
    /// Call when no more bytes will come: the last message has to be `e`. A failure of the reader's is thrown here:
    /// kDamaged, kNotADatabase or kNewerAccessFile.
    void end() const;

  private:
    void message(char kind, std::string_view content);
    void table(std::string_view content);
    void beginRows(std::string_view content);
    void row(std::string_view content);

    ContentListener& listener_;
    std::string waiting_;
    std::vector<std::size_t> columns_;  ///< how many each table has
    std::size_t begun_ = 0;             ///< tables whose rows have begun
    bool ended_ = false;
    std::uint8_t failure_ = kFailures;
    Row row_;
};

}  // namespace kolmera::jet
