#include "startup/accessimport.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>
#include <optional>
#include <system_error>
#include <utility>

#include "db/batchtransaction.h"
#include "db/companyschema.h"
#include "platform/engine/fieldvalue.h"
#include "platform/engine/privatedatabase.h"
#include "platform/error.h"
#include "platform/jet/jetreader.h"
#include "platform/privatefolder.h"

namespace kolmera {

namespace {

namespace fs = std::filesystem;
using Kind = AccessRemark::Kind;

constexpr std::int64_t kBatch = 500;                                // rows
constexpr std::int64_t kLargestExact = std::int64_t{1} << 53;       // ten-thousandths that a number keeps
constexpr double kFirstMoment = -657434, kBehindMoments = 2958466;  // the years 100 to 9999

std::string decimalText(std::int64_t tenThousandths) {
    const auto size = tenThousandths < 0 ? 0 - static_cast<std::uint64_t>(tenThousandths)
                                         : static_cast<std::uint64_t>(tenThousandths);
    return fmt::format("{}{},{:04}", tenThousandths < 0 ? "-" : "", size / 10000, size % 10000);
}

/// The value of a cell, and what was lost on the way.
struct CellReader {
    const FieldDef& field;
    std::optional<Kind> lost = {};

    Value operator()(jet::Nothing) { return Null{}; }
    Value operator()(bool yes) { return yes; }
    Value operator()(std::int64_t whole) { return whole; }
    Value operator()(double number) { return number; }
    Value operator()(jet::TenThousandths amount) {
        if (field.type == FieldType::Text || field.type == FieldType::Memo) return decimalText(amount.count);
        if (amount.count > kLargestExact || amount.count < -kLargestExact) lost = Kind::DigitsRounded;
        return static_cast<double>(amount.count) / 10000;  // the number nearest to the amount, when it is exact above
    }
    Value operator()(jet::Moment moment) {
        if (!(moment.days > kFirstMoment && moment.days < kBehindMoments)) {
            lost = Kind::NotFitting;
            return Null{};
        }
        const double day = std::trunc(moment.days);  // the time of a day counts forwards, before 1899 too
        if (day != moment.days) lost = Kind::TimeCut;
        return Date{static_cast<std::int32_t>(day)};
    }
    Value operator()(const std::string& text) { return text; }
    Value operator()(const jet::DamagedText& damaged) {
        lost = Kind::CharactersDamaged;
        return damaged.text;
    }
    Value operator()(jet::BinaryValue) {
        lost = Kind::BinaryLeftOut;
        return Null{};
    }
    Value operator()(jet::UnreadableValue) {
        lost = Kind::Unreadable;
        return Null{};
    }
};

/// Writes what the reader tells into the unfinished company.
class Importing : public jet::ContentListener {
  public:
    using Progress = std::function<bool(const AccessProgress&)>;

    Importing(const AccessImport& import, const fs::path& company, const Progress& progress)
        : import_(import), company_(company), progress_(progress) {}

    void table(jet::Table table) override {
        plan_.add(table);
        said_ += table.rows;
        fileTables_.push_back(std::move(table));
    }

    void other(jet::OtherObject kind, std::string name) override {
        constexpr Kind kLeftOut[] = {Kind::TableLeftOut,    Kind::LinkLeftOut,   Kind::QueryLeftOut,
                                     Kind::RelationLeftOut, Kind::ObjectLeftOut, Kind::PasswordLeftOut};
        static_assert(std::size(kLeftOut) == jet::kOtherObjects);
        plan_.remarks.push_back({kLeftOut[static_cast<std::size_t>(kind)], std::move(name)});
    }

    void rowsOf(std::size_t table) override {
        if (!database_) make();
        endTable();
        current_ = table;
        come_ = taken_ = 0;
        const AccessTable& planned = plan_.tables()[table];
        columns_.clear();
        for (const int ordinal : planned.columns) {
            if (ordinal >= 0) columns_.push_back(ordinal);
        }
        if (!planned.leftOut) batch_.emplace(*database_);
    }

    void row(const jet::Row& row) override {
        ++come_;
        const AccessTable& planned = plan_.tables()[*current_];
        if (planned.leftOut) return;
        values_.clear();
        for (std::size_t i = 0; i < row.size(); ++i) {
            const int ordinal = planned.columns[i];
            if (ordinal >= 0) {
                values_.push_back(valueOf(row[i], planned.made.fields[static_cast<std::size_t>(ordinal)], i));
            } else if (std::holds_alternative<jet::BinaryValue>(row[i])) {
                count(Kind::BinaryLeftOut, i);
            }
        }
        insert(planned.made.name);
        if (come_ % kBatch == 0) batch_->next();
    }

    bool goOn() {
        if (!current_) return progress_({});
        return progress_({.table = fileTables_[*current_].name, .rows = before_ + come_, .of = said_});
    }

    AccessResult finish() {
        if (!database_) make();
        endTable();
        addFirstRows();
        database_.reset();
        for (const auto& [place, values] : counts_) {
            const jet::Table& table = fileTables_[place.first.first];
            const std::string& column = table.columns[place.first.second].name;
            plan_.remarks.push_back({place.second, table.name + "." + column, values});
        }
        // What holds no data is long, and told last.
        std::stable_partition(plan_.remarks.begin(), plan_.remarks.end(), [](const AccessRemark& remark) {
            return remark.kind != Kind::QueryLeftOut && remark.kind != Kind::ObjectLeftOut &&
                   remark.kind != Kind::PropertiesLeftOut;
        });
        return {.cancelled = false, .tables = std::move(tables_), .remarks = std::move(plan_.remarks)};
    }

  private:
    void make() {
        plan_.complete();
        createFileDatabase(company_, plan_.definitions(), import_.options.password);
        OpenOptions options = import_.options;
        options.readOnly = false;
        database_ = openFileDatabase(company_, options);
    }

    Value valueOf(const jet::Cell& cell, const FieldDef& field, std::size_t column) {
        CellReader reader{field};
        Value value = std::visit(reader, cell);
        try {
            fitToField(field, value, import_.options.locale);
        } catch (const PlatformError&) {
            value = Null{};
            reader.lost = Kind::NotFitting;
        }
        if (reader.lost) count(*reader.lost, column);
        return value;
    }

    void count(Kind kind, std::size_t column) { ++counts_[{{*current_, column}, kind}]; }

    void insert(const std::string& table) {
        try {
            database_->insertRows(table, columns_, std::span(&values_, 1));
            ++taken_;
        } catch (const PlatformError& error) {
            if (error.endsRun() || error.number() != errors::kDuplicateKey) throw;
        }
    }

    void endTable() {
        if (!current_) return;
        if (batch_) batch_->end();
        batch_.reset();
        const std::string& name = fileTables_[*current_].name;
        const AccessTable& planned = plan_.tables()[*current_];
        if (come_ < planned.rows) plan_.remarks.push_back({Kind::RowsLost, name, planned.rows - come_});
        if (!planned.leftOut) {
            if (taken_ < come_) plan_.remarks.push_back({Kind::RowsRefused, name, come_ - taken_});
            tables_.push_back({name, taken_});
        }
        before_ += come_;
        come_ = 0;
        current_.reset();
    }

    void addFirstRows() {
        for (const NewCompanyRow& row : newCompanyRows(import_.companyName)) {
            if (!plan_.isMissing(row.table)) continue;
            const auto records = database_->open(row.table, RecordsetType::Table);
            records->addNew();
            for (const auto& [column, value] : row.values) records->set(column, value);
            records->update();
        }
        database_->settle();
    }

    const AccessImport& import_;
    const fs::path& company_;
    const Progress& progress_;
    AccessPlan plan_;
    std::vector<jet::Table> fileTables_;
    std::unique_ptr<Database> database_;
    std::optional<BatchTransaction> batch_;
    std::optional<std::size_t> current_;
    std::int64_t come_ = 0, taken_ = 0;   ///< rows of the table
    std::int64_t before_ = 0, said_ = 0;  ///< rows of the tables before it; of all
    std::vector<int> columns_;
    std::vector<Value> values_;
    std::map<std::pair<std::pair<std::size_t, std::size_t>, Kind>, std::int64_t> counts_;
    std::vector<CopiedTable> tables_;
};

}  // namespace

AccessResult importAccessFile(const AccessImport& import,
                              const std::function<bool(const AccessProgress& progress)>& goOn) {
    // What is not finished lies in a folder that the next import removes when this one is killed.
    const std::string prefix = import.company.filename().string().append(".import");
    PrivateFolder::sweep(import.company.parent_path(), prefix);
    const PrivateFolder folder(import.company.parent_path(), prefix);
    const fs::path unfinished = folder.path() / "company.mdb";
    AccessResult result;
    {
        Importing importing(import, unfinished, goOn);
        if (!jet::readAccessFile(import.reader, import.file, importing, [&] { return importing.goOn(); })) {
            result.cancelled = true;
            return result;
        }
        result = importing.finish();
    }
    placeFileDatabase(unfinished, import.company, import.replace, import.options);
    return result;
}

}  // namespace kolmera
