#include "registers/register.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <utility>

#include "db/companyschema.h"
#include "db/conversions.h"
#include "history/references.h"
#include "lang/keys/registers.h"
#include "platform/attempt.h"
#include "platform/lettercase.h"
#include "pricing/clsvaluta.h"
#include "pricing/listsetting.h"
#include "registers/registerstore.h"
#include "registers/registertexts.h"
#include "registers/registervalues.h"

namespace kolmera {
namespace {

using What = RegisterProblem::What;

/// The captions of both languages are names of columns.
class InLanguage {
  public:
    InLanguage(LanguageTexts& texts, std::string_view language) : texts_(texts), before_(texts.language()) {
        texts_.InitSpråkOrd(language);
    }
    InLanguage(const InLanguage&) = delete;
    InLanguage& operator=(const InLanguage&) = delete;
    ~InLanguage() { texts_.InitSpråkOrd(before_); }

  private:
    LanguageTexts& texts_;
    std::string before_;
};

bool isEmpty(const Value& value) {
    return isNull(value) || (std::holds_alternative<std::string>(value) && textOf(value).empty());
}

}  // namespace

Register::Register(const RegisterDefinition& definition, SqlLayer& sql, LanguageTexts& texts)
    : definition_(definition),
      sql_(sql),
      texts_(texts),
      store_(definition.rows == nullptr ? tableStore(definition, sql) : settingStore(definition, sql, texts)) {
    columns_ = store_->columns();
    keys_ = store_->keys();
    makeCaptions();
}

Register::~Register() = default;

std::string Register::title() { return texts_.FormulärSträng(definition_.title); }

void Register::makeCaptions() {
    const auto captionOf = [this](std::size_t place) {
        if (!takesRows()) return texts_.FormulärSträng(definition_.columns[place].caption);
        const int ordinal = sql_.FtgDB->table(definition_.table).ordinal(columns_[place].field);
        const std::string caption = texts_.RegisterText(definition_.table, ordinal);
        return caption.empty() ? columns_[place].field : caption;
    };
    const InLanguage other(texts_, texts_.language() == "EN" ? "SE" : "EN");
    for (std::size_t place = 0; place < columns_.size(); ++place) columns_[place].other = captionOf(place);
    const InLanguage own(texts_, texts_.language() == "EN" ? "SE" : "EN");
    for (std::size_t place = 0; place < columns_.size(); ++place) columns_[place].caption = captionOf(place);
}

int Register::columnNamed(std::string_view name) const {
    const std::string_view wanted = trimmed(name);
    for (const auto member : {&RegisterColumn::field, &RegisterColumn::caption, &RegisterColumn::other}) {
        const auto found =
            std::ranges::find_if(columns_, [&](const auto& column) { return equalNoCase(column.*member, wanted); });
        if (found != columns_.end()) return static_cast<int>(found - columns_.begin());
    }
    return -1;
}

RegisterColumn Register::cell(const RegisterRow& row, int column) const {
    RegisterColumn cell = this->column(column);
    store_->refine(row, column, cell);
    return cell;
}

std::function<bool(RegisterRow&)> Register::rows() { return store_->rows(); }

void Register::forEachRow(const std::function<bool(const RegisterRow&)>& take) {
    const auto next = rows();
    for (RegisterRow row; next(row);) {
        if (!take(row)) return;
    }
}

std::optional<RegisterRow> Register::find(std::span<const std::string> key) {
    if (static_cast<int>(key.size()) != keys_) return std::nullopt;
    RegisterValues values;
    for (int place = 0; place < keys_; ++place) {
        if (valueOf({}, place, key[static_cast<std::size_t>(place)], values[place])) return std::nullopt;
    }
    return findBy(values);
}

std::optional<RegisterRow> Register::findBy(const RegisterValues& values) {
    std::vector<Value> key;
    key.reserve(static_cast<std::size_t>(keys_));
    for (int place = 0; place < keys_; ++place) key.push_back(values.at(place));
    if (std::ranges::any_of(key, isEmpty)) return std::nullopt;
    return store_->find(key);
}

std::vector<Value> Register::keyValues(const RegisterRow& row) const {
    return {row.cells.begin(), row.cells.begin() + keys_};
}

std::vector<std::string> Register::keyOf(const RegisterRow& row) const {
    std::vector<std::string> key;
    key.reserve(static_cast<std::size_t>(keys_));
    for (int place = 0; place < keys_; ++place) key.push_back(textOf(row, place));
    return key;
}

RegisterRow Register::newRow() const {
    RegisterRow row;
    for (const RegisterColumn& column : columns_) row.cells.push_back(emptyValue(column));
    return row;
}

std::string Register::textOf(const RegisterColumn& cell, const Value& value) const {
    const auto* const truth = std::get_if<bool>(&value);
    if (truth != nullptr) return texts_.FormulärSträng(*truth ? text::registers::kYes : text::registers::kNo);
    return TillText(value, cell.type, sql_.locale());
}

std::string Register::textOf(const RegisterRow& row, int column) const {
    return textOf(cell(row, column), row.cells[static_cast<std::size_t>(column)]);
}

std::optional<RegisterProblem> Register::valueOf(const RegisterRow& row, int column, std::string_view text,
                                                 Value& value) const {
    return readValue(cell(row, column), column, text, {.locale = sql_.locale()}, value);
}

// What is wrong.

void Register::checkValues(const RegisterRow& row, const RegisterValues& values, Problems& problems) {
    for (const auto& [place, value] : values) {
        const RegisterColumn cell = this->cell(row, place);
        const std::string text = textOf(cell, value);
        if (cell.fixed) problems.push_back({What::Fixed, place, text});
        if (cell.required() && isEmpty(value)) problems.push_back({What::Missing, place, text});
        if (cell.refersToTable.empty() || isEmpty(value) || isThere(cell.refersToTable, value)) continue;
        const RegisterDefinition* named = cell.refersTo();
        const std::string title = named == nullptr ? cell.refersToTable : texts_.FormulärSträng(named->title);
        problems.push_back({What::NoSuchRow, place, text, title});
    }
}

/// The home currency is always there.
bool Register::isThere(const std::string& table, const Value& key) {
    if (equalNoCase(table, "Syvaluta") && kolmera::textOf(key) == kHomeCurrency) return true;
    const RegisterDefinition* named = registerOfTable(table);
    if (named == nullptr) return true;
    return storeOf(*named).find({&key, 1}).has_value();
}

RegisterStore& Register::storeOf(const RegisterDefinition& named) {
    std::unique_ptr<RegisterStore>& store = named_[&named];
    if (!store) store = named.rows == nullptr ? tableStore(named, sql_) : settingStore(named, sql_, texts_);
    return *store;
}

Register::Problems Register::problemsOfText(const RegisterRow& row, int column, std::string_view text) {
    RegisterValues values;
    Problems problems;
    if (auto problem = valueOf(row, column, text, values[column])) {
        problems.push_back(std::move(*problem));
    } else {
        checkValues(row, values, problems);
    }
    return problems;
}

RegisterChoices Register::choices(const RegisterColumn& cell, std::string_view typed) {
    RegisterChoices choices;
    for (const char choice : cell.choices) choices.rows.push_back({std::string(1, choice), choiceText(texts_, choice)});
    if (const RegisterDefinition* named = cell.refersTo()) return rowsOf(*named, typed);
    if (cell.suggests.empty()) return choices;
    RegisterStore& store = storeOf(*registerNamed(cell.suggests));
    const RegisterColumn value = store.columns().back();
    const auto next = store.rows();
    for (RegisterRow row; next(row);)
        choices.rows.push_back(
            {TillText(row.cells.front(), sql_.locale()), TillText(row.cells.back(), value.type, sql_.locale()) + " %"});
    return choices;
}

RegisterChoices Register::rowsOf(const RegisterDefinition& named, std::string_view typed) {
    const auto columns = namingColumns(named.table);
    const IndexDef* index = sql_.FtgDB->table(named.table).index(named.index);
    const bool byStart = equalNoCase(named.table, "Produkt");
    RegisterChoices choices{.rows = {}, .more = byStart};
    if (index == nullptr || (byStart && trimmed(typed).empty())) return choices;
    const std::string key = index->columns().front();
    std::string where;
    if (byStart) {
        constexpr std::string_view kLast = "\uFFFF";  // behind every letter in the orders of files and servers
        where = fmt::format(" WHERE {0} >= {1} AND {0} <= {2}", key, SqlLayer::SQLText(trimmed(typed)),
                            SqlLayer::SQLText(fmt::format("{}{}", trimmed(typed), kLast)));
    }
    const auto rows = sql_.SQLÖppnaRs(
        fmt::format("SELECT {0}, {1} FROM {2}{3} ORDER BY {0}", key, fmt::join(columns, ", "), named.table, where),
        RecordsetType::Snapshot, options::kReadOnly);
    for (; !rows->eof(); rows->moveNext()) {
        if (choices.rows.size() == kMostChoices) {
            choices.more = true;
            break;
        }
        RegisterChoice& choice = choices.rows.emplace_back();
        choice.key = TillText(rows->value(0), sql_.locale());
        for (int column = 1; column <= static_cast<int>(columns.size()) && choice.name.empty(); ++column)
            choice.name = TillText(rows->value(column), sql_.locale());
    }
    return choices;
}

Register::Problems Register::problemsOfAdding(const RegisterValues& values) {
    if (!takesRows()) return {{What::AlwaysThere}};
    RegisterRow row = newRow();
    Problems problems;
    RegisterValues all = values;
    for (int key = 0; key < keys_; ++key) all.try_emplace(key, Null{});
    checkValues(row, all, problems);
    if (!problems.empty()) return problems;
    for (int key = 0; key < keys_; ++key) row.cells[static_cast<std::size_t>(key)] = values.at(key);
    if (store_->find(keyValues(row))) problems.push_back({What::Taken, 0, textOf(row, 0)});
    return problems;
}

Register::Problems Register::problemsOfChanging(const RegisterRow& shown, const RegisterValues& values) {
    Problems problems;
    const std::optional<RegisterRow> now = store_->find(keyValues(shown));
    if (!now) return {{What::NotThere, 0, textOf(shown, 0)}};
    for (int place = 0; place < static_cast<int>(columns_.size()); ++place) {
        const auto at = static_cast<std::size_t>(place);
        if (!column(place).fixed && now->cells[at] != shown.cells[at])
            problems.push_back({What::Changed, place, textOf(shown, place), textOf(*now, place)});
    }
    checkValues(shown, values, problems);
    if (!problems.empty()) return problems;
    RegisterRow after = shown;
    for (const auto& [place, value] : values) after.cells[static_cast<std::size_t>(place)] = value;
    const std::vector<Value> key = keyValues(after);
    if (key == keyValues(shown)) return problems;
    if (!takesRows()) return {{What::Fixed, 0, textOf(after, 0)}};
    const auto sameButForCase = [&] {
        const std::vector<std::string> one = keyOf(shown), other = keyOf(after);
        return std::ranges::equal(one, other, [](const auto& a, const auto& b) { return equalNoCase(a, b); });
    };
    if (sameButForCase()) return problems;
    if (store_->find(key)) problems.push_back({What::Taken, 0, textOf(after, 0)});
    if (const auto by = namedBy(shown)) problems.push_back({What::Named, 0, textOf(shown, 0), *by});
    return problems;
}

Register::Problems Register::problemsOfRemoving(const RegisterRow& shown) {
    if (!takesRows()) return {{What::AlwaysThere}};
    Problems problems = problemsOfChanging(shown, {});
    if (!problems.empty()) return problems;
    if (const auto by = namedBy(shown)) problems.push_back({What::Named, 0, textOf(shown, 0), *by});
    return problems;
}

/// Who names this row: the first register and column that does.
std::optional<std::string> Register::namedBy(const RegisterRow& row) {
    const auto described = [this](std::string_view table, std::string_view column) {
        const RegisterDefinition* by = registerOfTable(table);
        return fmt::format("{} ({})", by == nullptr ? std::string(table) : texts_.FormulärSträng(by->title), column);
    };
    const auto isNamed = [&](const Reference& reference, const std::string& table) {
        if (!equalNoCase(reference.named, definition_.table)) return false;
        const int place = columnNamed(reference.byColumn);
        const TableDef& by = sql_.FtgDB->table(table);
        if (place < 0 || by.ordinal(reference.column) < 0) return false;
        return anyRow(table, std::string(reference.column), row.cells[static_cast<std::size_t>(place)]);
    };
    for (const Reference& reference : kReferences) {
        const std::string table(reference.table);
        if (isNamed(reference, table)) return described(table, reference.column);
    }
    if (equalNoCase(definition_.table, "Syvaluta")) {
        Register lists(*registerNamed("price-lists"), sql_, texts_);
        const int currency = lists.columnNamed("Valuta");
        bool named = false;
        lists.forEachRow([&](const RegisterRow& list) {
            named = named || equalNoCase(lists.textOf(list, currency), textOf(row, 0));
            return !named;
        });
        if (named) return fmt::format("{} ({})", lists.title(), lists.column(currency).caption);
    }
    const std::vector<TableDef> own = companySchema();
    for (const std::string& table : sql_.FtgDB->tableNames()) {
        if (std::ranges::any_of(own, [&](const TableDef& one) { return equalNoCase(one.name, table); })) continue;
        for (const Reference& reference : kForeignReferences) {
            bool named = false;
            // A table with columns that the suite does not know cannot name its rows.
            PassedOverSilently passedOver;
            attempt(passedOver, table, [&] { named = isNamed(reference, table); });
            if (named) return described(table, reference.column);
        }
    }
    return std::nullopt;
}

bool Register::anyRow(const std::string& table, const std::string& column, const Value& value) {
    const TableDef& definition = sql_.FtgDB->table(table);
    const FieldType type = definition.fields[static_cast<std::size_t>(definition.ordinal(column))].type;
    const auto records =
        sql_.SQLÖppnaRs(fmt::format("SELECT * FROM {} WHERE {} = {}", table, column, sql_.SQLLiteral(value, type)),
                        RecordsetType::Dynaset, options::kReadOnly);
    return !records->eof();
}

// Writing.

/// `write` answers whether it has written. What others wrote before is seen, and nobody writes meanwhile.
void Register::inTransaction(const std::function<bool()>& write) {
    Database& database = *sql_.FtgDB;
    if (database.inTransaction()) {
        write();
        return;
    }
    database.begin();
    try {
        if (write()) return database.commit();
        database.rollback();
    } catch (...) {
        if (database.inTransaction()) database.rollback();
        throw;
    }
}

Register::Problems Register::add(const RegisterValues& values) {
    Problems problems;
    inTransaction([&] {
        problems = problemsOfAdding(values);
        if (problems.empty()) store_->add(values);
        return problems.empty();
    });
    return problems;
}

Register::Problems Register::change(const RegisterRow& shown, const RegisterValues& values) {
    RegisterValues changed;
    for (const auto& [place, value] : values) {
        if (shown.cells[static_cast<std::size_t>(place)] != value) changed.emplace(place, value);
    }
    Problems problems;
    inTransaction([&] {
        problems = problemsOfChanging(shown, changed);
        if (!problems.empty() || changed.empty()) return false;
        store_->change(shown, changed);
        return true;
    });
    return problems;
}

Register::Problems Register::remove(const RegisterRow& shown) {
    Problems problems;
    inTransaction([&] {
        problems = problemsOfRemoving(shown);
        if (problems.empty()) store_->remove(shown);
        return problems.empty();
    });
    return problems;
}

}  // namespace kolmera
