#include "jet/jetfile.h"

#include <fcntl.h>
#include <mdbtools.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "jet/jetpassword.h"
#include "platform/descriptor.h"
#include "platform/encodings.h"
#include "platform/jet/jetmessages.h"

namespace kolmera::jet {

namespace {

using Say = std::function<void(std::string_view)>;

constexpr int kRowStart = 0x1FFF;  // where a row begins on its page; above it are flags
constexpr std::size_t kMemoHeader = 12;
constexpr std::size_t kDecimalBytes = 17;
constexpr std::size_t kGuidBytes = 16;
constexpr int kWindows1252 = 1252;
constexpr unsigned char kPrimaryIndex = 1;
constexpr unsigned char kForeignIndex = 2;  // belongs to a relationship
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

struct Close {
    void operator()(MdbHandle* file) const { mdb_close(file); }
    void operator()(MdbTableDef* table) const { mdb_free_tabledef(table); }
};
constexpr std::string_view kRelationships = "MSysRelationships";
/// What a column or a table is shown and written by, besides its rule and its standard value.
constexpr const char* kProperties[] = {"Caption",   "Description", "Format",         "InputMask",
                                       "RowSource", "Expression",  "ValidationText", "Filter"};

using TablePointer = std::unique_ptr<MdbTableDef, Close>;

template <typename Element>
std::vector<Element*> elements(const GPtrArray* array) {
    std::vector<Element*> result;
    for (guint i = 0; array != nullptr && i < array->len; ++i) result.push_back(static_cast<Element*>(array->pdata[i]));
    return result;
}

/// UTF-16 as UTF-8; halves of pairs that stand alone are told.
Cell utf16Text(std::string_view bytes) {
    std::string text;
    bool damaged = bytes.size() % 2 != 0;
    const auto unit = [&](std::size_t at) {
        return static_cast<char32_t>(static_cast<unsigned char>(bytes[at]) | static_cast<unsigned char>(bytes[at + 1])
                                                                                 << 8);
    };
    for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
        const char32_t first = unit(at);
        const bool pair = first >= 0xD800 && first < 0xDC00 && at + 3 < bytes.size() && unit(at + 2) >= 0xDC00 &&
                          unit(at + 2) < 0xE000;
        if (pair) {
            appendUtf8(0x10000 + ((first - 0xD800) << 10) + (unit(at + 2) - 0xDC00), text);
            at += 2;
        } else if (first >= 0xD800 && first < 0xE000) {
            text += kReplacement;
            damaged = true;
        } else {
            appendUtf8(first, text);
        }
    }
    if (damaged) return DamagedText{text};
    return text;
}

/// Behind its mark a text has one byte a character, and a zero before and behind characters of two bytes.
std::string unpacked(std::string_view bytes) {
    std::string units;
    bool packed = true;
    for (std::size_t at = 2; at < bytes.size(); ++at) {
        if (bytes[at] == '\0') {
            packed = !packed;
        } else {
            units += bytes[at];
            if (packed) units += '\0';
            if (!packed && at + 1 < bytes.size()) units += bytes[++at];
        }
    }
    return units;
}

class JetFile {
  public:
    JetFile(MdbHandle* file, const Say& say) : file_(file), say_(say) {}

    /// False when the list of tables cannot be read.
    bool tell() {
        GPtrArray* catalogue = mdb_read_catalog(file_.get(), MDB_ANY);
        if (catalogue == nullptr) return false;
        const auto entries = elements<MdbCatalogEntry>(catalogue);
        for (MdbCatalogEntry* entry : entries) {
            if (entry->object_name == kRelationships) tellRelationships(entry);
        }
        for (MdbCatalogEntry* entry : entries) tellObject(entry);
        std::uint32_t number = 0;
        for (MdbCatalogEntry* entry : tables_) {
            say_(beginningMessage(number++));
            tellRows(entry);
        }
        say_(endMessage());
        return true;
    }

  private:
    void tellObject(MdbCatalogEntry* entry) {
        const std::string name = nameOf(entry->object_name);
        const bool ofTheFile = name.find("MSys") != std::string::npos;
        if (ofTheFile && entry->object_type != MDB_TABLE) return;
        switch (entry->object_type) {
            case MDB_TABLE:
                if (mdb_is_user_table(entry)) tellTable(entry);
                if (name == "MSysObjects") checkCatalogue(entry);
                break;
            case MDB_LINKED_TABLE:
                say_(otherMessage(OtherObject::LinkedTable, name));
                break;
            case MDB_QUERY:
                say_(otherMessage(OtherObject::Query, name));
                break;
            case MDB_RELATIONSHIP:
                if (!relationships_.contains(name)) say_(otherMessage(OtherObject::Relationship, name));
                break;
            case MDB_FORM:
            case MDB_MACRO:
            case MDB_REPORT:
            case MDB_MODULE:
                say_(otherMessage(OtherObject::Other, name));
                break;
            default:  // the file's own
                break;
        }
    }

    /// Tells the columns that relationships tie together.
    void tellRelationships(MdbCatalogEntry* entry) {
        const TablePointer table = open(entry);
        while (table && mdb_fetch_row(table.get())) {
            std::map<std::string, std::string> texts;
            for (const MdbColumn* column : elements<MdbColumn>(table->columns)) {
                const Cell cell = cellOf(*column);
                if (const auto* text = std::get_if<std::string>(&cell)) texts[nameOf(column->name)] = *text;
            }
            relationships_.insert(texts["szRelationship"]);
            say_(otherMessage(OtherObject::Relationship, texts["szObject"] + "." + texts["szColumn"] + " = " +
                                                             texts["szReferencedObject"] + "." +
                                                             texts["szReferencedColumn"]));
        }
    }

    /// A list of tables that lacks rows may lack tables.
    void checkCatalogue(MdbCatalogEntry* entry) {
        const TablePointer table = open(entry);
        std::uint64_t rows = 0;
        while (table && mdb_fetch_row(table.get())) ++rows;
        if (!table || rows < table->num_rows)
            say_(otherMessage(OtherObject::UnreadableTable, nameOf(entry->object_name)));
    }

    /// The library does not understand every name.
    static std::string nameOf(const char* name) { return validText({name, strnlen(name, MDB_MAX_OBJ_NAME)}); }

    static std::string textOrNothing(const char* text) { return text != nullptr ? validText(text) : std::string(); }

    static void appendName(std::string& names, std::string_view name) {
        if (!names.empty()) names += ", ";
        names += name;
    }

    /// The names of those that have a value.
    template <typename Property>
    static std::string propertiesOf(const Property& property) {
        std::string names;
        for (const char* name : kProperties) {
            const char* value = property(name);
            if (value != nullptr && *value != '\0') appendName(names, name);
        }
        return names;
    }

    static std::string validText(std::string_view rest) {
        std::string valid;
        while (!rest.empty()) {
            const FirstCharacter first = firstCharacter(rest);
            valid += first.character ? rest.substr(0, first.length) : kReplacement;
            rest.remove_prefix(first.length);
        }
        return valid;
    }

    TablePointer open(MdbCatalogEntry* entry) {
        TablePointer table(mdb_read_table(entry));
        if (!table || mdb_read_columns(table.get()) == nullptr) return nullptr;
        mdb_rewind_table(table.get());
        return table;
    }

    void tellTable(MdbCatalogEntry* entry) {
        const TablePointer opened = open(entry);
        if (!opened) return say_(otherMessage(OtherObject::UnreadableTable, nameOf(entry->object_name)));
        const auto property = [&](const char* name) { return mdb_table_get_prop(opened.get(), name); };
        Table table{.name = nameOf(entry->object_name), .rows = opened->num_rows, .columns = {}, .indexes = {}};
        table.rule = textOrNothing(property("ValidationRule"));
        table.properties = propertiesOf(property);
        const auto columns = elements<MdbColumn>(opened->columns);
        for (const MdbColumn* column : columns) table.columns.push_back(described(*column));
        mdb_read_indices(opened.get());
        for (const MdbIndex* index : elements<MdbIndex>(opened->indices)) {
            if (index == nullptr || index->index_type == kForeignIndex) continue;
            table.indexes.push_back(described(*index, columns.size()));
            if (index->index_type != kPrimaryIndex && (index->flags & MDB_IDX_REQUIRED) == 0) continue;
            for (const auto& column : table.indexes.back().columns) table.columns[column.first].required = true;
        }
        say_(tableMessage(table));
        tables_.push_back(entry);
    }

    [[nodiscard]] Column described(const MdbColumn& column) const {
        const bool known = column.col_type >= MDB_BOOL && column.col_type <= MDB_NUMERIC;
        const auto property = [&](const char* name) { return mdb_col_get_prop(&column, name); };
        const auto says = [&](const char* name, const char* value) {
            const char* said = property(name);
            return said != nullptr && std::strcmp(said, value) == 0;
        };
        Column result{.name = nameOf(column.name),
                      .type = known ? static_cast<ColumnType>(column.col_type) : ColumnType::Other,
                      .size = static_cast<std::uint32_t>(column.col_size),
                      .counter = column.is_long_auto != 0 || (column.col_type == MDB_REPID && column.is_uuid_auto != 0),
                      .standard = textOrNothing(property("DefaultValue")),
                      .rule = textOrNothing(property("ValidationRule")),
                      .required = says("Required", "yes"),
                      .properties = propertiesOf(property)};
        if (says("AllowZeroLength", "no")) appendName(result.properties, "AllowZeroLength");
        if (result.type == ColumnType::Text && !isJet3()) result.size /= 2;
        return result;
    }

    static Index described(const MdbIndex& index, std::size_t columns) {
        Index result{.name = nameOf(index.name), .unique = (index.flags & MDB_IDX_UNIQUE) != 0, .columns = {}};
        for (unsigned i = 0; i < index.num_keys && i < MDB_MAX_IDX_COLS; ++i) {
            const auto column = static_cast<std::size_t>(index.key_col_num[i] - 1);
            if (column >= columns) return {result.name, result.unique, {}};
            result.columns.emplace_back(static_cast<std::uint32_t>(column), index.key_col_order[i] == MDB_DESC);
        }
        return result;
    }

    void tellRows(MdbCatalogEntry* entry) {
        const TablePointer table = open(entry);
        if (!table) return;
        const auto columns = elements<MdbColumn>(table->columns);
        Row row;
        while (mdb_fetch_row(table.get())) {
            row.clear();
            for (const MdbColumn* column : columns) row.push_back(cellOf(*column));
            say_(rowMessage(row));
        }
    }

    [[nodiscard]] bool isJet3() const { return file_->f->jet_version == MDB_VER_JET3; }
    [[nodiscard]] std::size_t pageSize() const { return static_cast<std::size_t>(file_->fmt->pg_size); }

    /// The library has placed the value on the page of the row; of a Boolean it tells whether its bit is missing.
    Cell cellOf(const MdbColumn& column) {
        if (column.col_type == MDB_BOOL) return column.cur_value_len == 0;
        if (column.cur_value_len == 0) return Nothing{};
        const auto start = static_cast<std::size_t>(column.cur_value_start);
        const auto length = static_cast<std::size_t>(column.cur_value_len);
        if (column.cur_value_start < 0 || column.cur_value_len < 0 || start + length > pageSize()) {
            return UnreadableValue{};
        }
        const std::string_view bytes(reinterpret_cast<const char*>(file_->pg_buf) + start, length);
        switch (column.col_type) {
            case MDB_BYTE:
                return whole<std::uint8_t>(bytes);
            case MDB_INT:
                return whole<std::int16_t>(bytes);
            case MDB_LONGINT:
                return whole<std::int32_t>(bytes);
            case MDB_MONEY:
                if (length < sizeof(std::int64_t)) return UnreadableValue{};
                return TenThousandths{number<std::int64_t>(bytes)};
            case MDB_FLOAT:
                if (length < sizeof(float)) return UnreadableValue{};
                return static_cast<double>(std::bit_cast<float>(number<std::uint32_t>(bytes)));
            case MDB_DOUBLE:
            case MDB_DATETIME: {
                if (length < sizeof(double)) return UnreadableValue{};
                const auto value = std::bit_cast<double>(number<std::uint64_t>(bytes));
                if (column.col_type == MDB_DOUBLE) return value;
                return Moment{value};
            }
            case MDB_TEXT:
                return textOf(bytes);
            case MDB_MEMO:
                return memoOf(bytes);
            case MDB_REPID:
                return guidOf(bytes);
            case MDB_NUMERIC:
                return decimalOf(column, start, length);
            default:
                return BinaryValue{};
        }
    }

    template <typename Number>
    static Number number(std::string_view bytes) {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < sizeof(Number); ++i) {
            value |= std::uint64_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
        }
        return static_cast<Number>(value);
    }

    template <typename Number>
    static Cell whole(std::string_view bytes) {
        if (bytes.size() < sizeof(Number)) return UnreadableValue{};
        return static_cast<std::int64_t>(number<Number>(bytes));
    }

    Cell textOf(std::string_view bytes) {
        if (!isJet3()) return utf16Text(bytes.starts_with("\xFF\xFE") ? unpacked(bytes) : std::string(bytes));
        if (file_->f->code_page == 0 || file_->f->code_page == kWindows1252) {
            return toUtf8(bytes, CodePage::Windows1252);
        }
        std::string text(bytes.size() * 4 + 1, '\0');
        const int length = mdb_unicode2ascii(file_.get(), bytes.data(), bytes.size(), text.data(), text.size());
        text.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
        // The library puts a question mark for what it cannot convert.
        std::string valid = validText(text);
        if (valid != text || std::ranges::count(text, '?') > std::ranges::count(bytes, '?')) return DamagedText{valid};
        return valid;
    }

    /// A long text lies in the row, in another row, or in a chain of rows.
    Cell memoOf(std::string_view bytes) {
        if (bytes.size() < kMemoHeader) return UnreadableValue{};
        const auto header = number<std::uint32_t>(bytes);
        const auto place = number<std::uint32_t>(bytes.substr(4));
        const std::size_t length = header & 0x00FFFFFF;
        if ((header & 0x80000000) != 0) return textOf(bytes.substr(kMemoHeader));
        if ((header & 0x40000000) != 0) {
            const auto row = longRow(place);
            return row ? textOf(*row) : Cell(UnreadableValue{});
        }
        std::string text;
        for (std::uint32_t next = place; next != 0;) {
            const auto row = longRow(next);
            if (!row || row->size() <= 4 || text.size() + row->size() - 4 > length) return UnreadableValue{};
            next = number<std::uint32_t>(*row);
            text += row->substr(4);
        }
        return text.size() == length ? textOf(text) : Cell(UnreadableValue{});
    }

    std::optional<std::string_view> longRow(std::uint32_t place) {
        void* page = nullptr;
        int start = 0;
        std::size_t length = 0;
        if (mdb_find_pg_row(file_.get(), static_cast<int>(place), &page, &start, &length) != 0) return std::nullopt;
        const auto begin = static_cast<std::size_t>(start & kRowStart);
        if (page == nullptr || begin + length > pageSize()) return std::nullopt;
        return std::string_view(static_cast<const char*>(page) + begin, length);
    }

    static Cell guidOf(std::string_view bytes) {
        if (bytes.size() < kGuidBytes) return UnreadableValue{};
        const auto at = [&](int i) { return static_cast<unsigned char>(bytes[static_cast<std::size_t>(i)]); };
        std::string text = "{";
        for (const int i : {3, 2, 1, 0, -1, 5, 4, -1, 7, 6, -1, 8, 9, -1, 10, 11, 12, 13, 14, 15}) {
            constexpr std::string_view kDigits = "0123456789ABCDEF";
            if (i < 0) {
                text += '-';
            } else {
                text += kDigits[at(i) >> 4];
                text += kDigits[at(i) & 15];
            }
        }
        return text + "}";
    }

    Cell decimalOf(const MdbColumn& column, std::size_t start, std::size_t length) {
        if (length < kDecimalBytes) return UnreadableValue{};
        char* digits = mdb_numeric_to_string(file_.get(), static_cast<int>(start), column.col_scale, column.col_prec);
        if (digits == nullptr) return UnreadableValue{};
        std::string text(digits);
        g_free(digits);
        return text;
    }

    std::unique_ptr<MdbHandle, Close> file_;
    const Say& say_;
    std::vector<MdbCatalogEntry*> tables_;
    std::set<std::string> relationships_;  ///< told with their columns
};

std::string firstPage(const char* file) {
    std::string page(MDB_PGSIZE, '\0');
    const Descriptor descriptor(file, O_RDONLY | O_CLOEXEC);
    page.resize(descriptor.readAt(0, page.data(), page.size()));
    return page;
}

}  // namespace

void tellJetFile(const char* file, const Say& say) {
    MdbHandle* opened = mdb_open(file, MDB_NOFLAGS);
    if (opened == nullptr) return say(failureMessage(Failure::Damaged));
    if (opened->f->jet_version > MDB_VER_JET4) return say(failureMessage(Failure::NewerFormat));
    if (hasPassword(firstPage(file))) say(otherMessage(OtherObject::Password, ""));
    if (!JetFile(opened, say).tell()) say(failureMessage(Failure::Damaged));
}

}  // namespace kolmera::jet
