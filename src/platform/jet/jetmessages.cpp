#include "platform/jet/jetmessages.h"

#include <bit>

#include "platform/encodings.h"
#include "platform/error.h"
#include "platform/jet/jeterrors.h"

namespace kolmera::jet {

namespace {

// The bytes of cells.
constexpr char kNothing = '-', kFalse = '0', kTrue = '1', kWhole = 'w', kCurrency = 'c', kDouble = 'd', kMoment = 'm',
               kText = 't', kDamagedText = 'x', kBinary = 'b', kUnreadable = '?';

constexpr std::size_t kHeader = 5;
constexpr std::size_t kMostTables = 32768;  // objects of a Jet file
constexpr std::size_t kMostColumns = 255;
constexpr std::size_t kMostIndexes = 255;
constexpr std::size_t kLongestName = 256;  // of 64 characters

template <typename Number>
void putNumber(std::string& bytes, Number number) {
    for (std::size_t i = 0; i < sizeof(Number); ++i) {
        bytes += static_cast<char>(static_cast<std::uint64_t>(number) >> (8 * i) & 0xFF);
    }
}

void putText(std::string& bytes, std::string_view text) {
    putNumber(bytes, static_cast<std::uint32_t>(text.size()));
    bytes += text;
}

std::string message(char kind, std::string_view content) {
    std::string bytes(1, kind);
    putText(bytes, content);
    return bytes;
}

struct CellWriter {
    std::string& bytes;

    void operator()(Nothing) const { bytes += kNothing; }
    void operator()(bool yes) const { bytes += yes ? kTrue : kFalse; }
    void operator()(std::int64_t whole) const { number(kWhole, whole); }
    void operator()(TenThousandths currency) const { number(kCurrency, currency.count); }
    void operator()(double value) const { number(kDouble, std::bit_cast<std::uint64_t>(value)); }
    void operator()(Moment moment) const { number(kMoment, std::bit_cast<std::uint64_t>(moment.days)); }
    void operator()(const std::string& value) const { text(kText, value); }
    void operator()(const DamagedText& value) const { text(kDamagedText, value.text); }
    void operator()(BinaryValue) const { bytes += kBinary; }
    void operator()(UnreadableValue) const { bytes += kUnreadable; }

  private:
    template <typename Number>
    void number(char kind, Number value) const {
        bytes += kind;
        putNumber(bytes, value);
    }
    void text(char kind, std::string_view value) const {
        bytes += kind;
        putText(bytes, value);
    }
};

[[noreturn]] void refuse() { throw PlatformError(errors::kDamaged, "the reader of the file has lost its way"); }

void require(bool right) {
    if (!right) refuse();
}

bool isUtf8(std::string_view text) {
    for (text.remove_prefix(asciiRun(text)); !text.empty(); text.remove_prefix(asciiRun(text))) {
        const FirstCharacter first = firstCharacter(text);
        if (!first.character) return false;
        text.remove_prefix(first.length);
    }
    return true;
}

/// Takes one piece after the other out of a message.
class Pieces {
  public:
    explicit Pieces(std::string_view content) : content_(content) {}

    template <typename Number>
    Number number() {
        std::uint64_t value = 0;
        const std::string_view bytes = take(sizeof(Number));
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            value |= std::uint64_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
        }
        return static_cast<Number>(value);
    }
    char byte() { return take(1).front(); }
    double real() { return std::bit_cast<double>(number<std::uint64_t>()); }
    bool flag() {
        const auto value = number<std::uint8_t>();
        require(value < 2);
        return value == 1;
    }
    std::string text() {
        const std::string_view bytes = take(number<std::uint32_t>());
        require(isUtf8(bytes));
        return std::string(bytes);
    }
    std::string name() {
        std::string name = text();
        require(!name.empty() && name.size() <= kLongestName && name.find('\0') == std::string::npos);
        return name;
    }
    std::size_t count(std::size_t most) {
        const std::size_t value = number<std::uint32_t>();
        require(value <= most);
        return value;
    }
    void end() const { require(content_.empty()); }

  private:
    std::string_view take(std::size_t length) {
        require(length <= content_.size());
        const std::string_view taken = content_.substr(0, length);
        content_.remove_prefix(length);
        return taken;
    }

    std::string_view content_;
};

Cell cellOf(Pieces& pieces) {
    switch (pieces.byte()) {
        case kNothing:
            return Nothing{};
        case kFalse:
            return false;
        case kTrue:
            return true;
        case kWhole:
            return pieces.number<std::int64_t>();
        case kCurrency:
            return TenThousandths{pieces.number<std::int64_t>()};
        case kDouble:
            return pieces.real();
        case kMoment:
            return Moment{pieces.real()};
        case kText:
            return pieces.text();
        case kDamagedText:
            return DamagedText{pieces.text()};
        case kBinary:
            return BinaryValue{};
        case kUnreadable:
            return UnreadableValue{};
        default:
            refuse();
    }
}

Column columnOf(Pieces& pieces) {
    Column column;
    column.name = pieces.name();
    const auto type = pieces.number<std::uint8_t>();
    require(type <= 16);
    column.type = static_cast<ColumnType>(type);
    column.size = pieces.number<std::uint32_t>();
    column.counter = pieces.flag();
    column.standard = pieces.text();
    column.rule = pieces.text();
    column.required = pieces.flag();
    column.properties = pieces.text();
    return column;
}

Index indexOf(Pieces& pieces, std::size_t columns) {
    Index index;
    index.name = pieces.name();
    index.unique = pieces.flag();
    for (std::size_t left = pieces.count(kMostColumns); left > 0; --left) {
        const auto column = pieces.number<std::uint32_t>();
        require(column < columns);
        index.columns.emplace_back(column, pieces.flag());
    }
    return index;
}

}  // namespace

std::string tableMessage(const Table& table) {
    std::string content;
    putText(content, table.name);
    putNumber(content, table.rows);
    putNumber(content, static_cast<std::uint32_t>(table.columns.size()));
    for (const Column& column : table.columns) {
        putText(content, column.name);
        putNumber(content, static_cast<std::uint8_t>(column.type));
        putNumber(content, column.size);
        putNumber(content, std::uint8_t{column.counter});
        putText(content, column.standard);
        putText(content, column.rule);
        putNumber(content, std::uint8_t{column.required});
        putText(content, column.properties);
    }
    putNumber(content, static_cast<std::uint32_t>(table.indexes.size()));
    for (const Index& index : table.indexes) {
        putText(content, index.name);
        putNumber(content, std::uint8_t{index.unique});
        putNumber(content, static_cast<std::uint32_t>(index.columns.size()));
        for (const auto& [column, descending] : index.columns) {
            putNumber(content, column);
            putNumber(content, std::uint8_t{descending});
        }
    }
    putText(content, table.rule);
    putText(content, table.properties);
    return message('t', content);
}

std::string otherMessage(OtherObject kind, std::string_view name) {
    std::string content;
    putNumber(content, static_cast<std::uint8_t>(kind));
    putText(content, name);
    return message('o', content);
}

std::string beginningMessage(std::uint32_t table) {
    std::string content;
    putNumber(content, table);
    return message('b', content);
}

std::string rowMessage(const Row& row) {
    std::string content;
    for (const Cell& cell : row) std::visit(CellWriter{content}, cell);
    return message('r', content);
}

std::string endMessage() { return message('e', ""); }

std::string failureMessage(Failure failure) { return message('f', std::string(1, static_cast<char>(failure))); }

void MessageParser::take(std::string_view bytes) {
    waiting_ += bytes;
    std::string_view rest = waiting_;
    while (rest.size() >= kHeader) {
        Pieces header(rest.substr(1, kHeader - 1));
        const std::size_t length = header.count(kLongestMessage);
        if (rest.size() < kHeader + length) break;
        message(rest.front(), rest.substr(kHeader, length));
        rest.remove_prefix(kHeader + length);
    }
    waiting_.erase(0, waiting_.size() - rest.size());
}

void MessageParser::message(char kind, std::string_view content) {
    require(!ended_);
    Pieces pieces(content);
    switch (kind) {
        case 't':
            return table(content);
        case 'b':
            return beginRows(content);
        case 'r':
            return row(content);
        case 'o': {
            require(begun_ == 0);
            const auto other = pieces.number<std::uint8_t>();
            require(other < kOtherObjects);
            listener_.other(static_cast<OtherObject>(other), pieces.text());
            break;
        }
        case 'e':
            require(begun_ == columns_.size());
            ended_ = true;
            break;
        case 'f':
            failure_ = pieces.number<std::uint8_t>();
            require(failure_ < kFailures);
            ended_ = true;
            break;
        default:
            refuse();
    }
    pieces.end();
}

void MessageParser::table(std::string_view content) {
    require(begun_ == 0 && columns_.size() < kMostTables);
    Pieces pieces(content);
    Table table;
    table.name = pieces.name();
    table.rows = pieces.number<std::uint32_t>();
    for (std::size_t left = pieces.count(kMostColumns); left > 0; --left) table.columns.push_back(columnOf(pieces));
    for (std::size_t left = pieces.count(kMostIndexes); left > 0; --left) {
        table.indexes.push_back(indexOf(pieces, table.columns.size()));
    }
    table.rule = pieces.text();
    table.properties = pieces.text();
    pieces.end();
    columns_.push_back(table.columns.size());
    listener_.table(std::move(table));
}

void MessageParser::beginRows(std::string_view content) {
    Pieces pieces(content);
    require(pieces.number<std::uint32_t>() == begun_ && begun_ < columns_.size());
    pieces.end();
    listener_.rowsOf(begun_++);
}

void MessageParser::row(std::string_view content) {
    require(begun_ > 0);
    Pieces pieces(content);
    row_.clear();
    for (std::size_t left = columns_[begun_ - 1]; left > 0; --left) row_.push_back(cellOf(pieces));
    pieces.end();
    listener_.row(row_);
}

void MessageParser::end() const {
    require(ended_ && waiting_.empty());
    if (failure_ == kFailures) return;
    const auto failure = static_cast<Failure>(failure_);
    if (failure == Failure::NewerFormat) {
        throw PlatformError(errors::kNewerAccessFile, "the file has a newer format than can be read");
    }
    if (failure == Failure::NotJet) throw PlatformError(errors::kNotADatabase, "not an Access-format file");
    refuse();
}

}  // namespace kolmera::jet
