#include "import/masks/samplerun.h"

#include "db/conversions.h"
#include "import/masks/columnwriter.h"
#include "import/masks/draftrecord.h"
#include "import/masks/productcoupling.h"
#include "import/masks/productmatcher.h"
#include "import/masks/recordreader.h"
#include "import/rows/defaults.h"
#include "import/rows/fieldconversion.h"
#include "lang/errortext.h"
#include "platform/attempt.h"

namespace kolmera {
namespace {

using Product = SampleValues::Product;

/// The company's side of a record.
class SampleProduct {
  public:
    SampleProduct(SqlLayer& sql, Date Idag, std::string_view supplier, const LoadedMask& mask)
        : sql_(sql),
          Idag_(Idag),
          mask_(mask),
          products_(sql.SQLÖppnaTabell("Produkt", ProductMatcher::index(mask.keyTarget), 0, false)),
          syinställningar_(sql.SQLÖppnaRs("Syinställningar", RecordsetType::Dynaset, options::kReadOnly)),
          syinställningar2_(sql.SQLÖppnaRs("Syinställningar2", RecordsetType::Dynaset, options::kReadOnly)),
          settings_(columnSettings(*syinställningar_, *syinställningar2_, Idag, sql.locale(), report_)),
          prices_(sql, report_, Idag, settings_.PPrisDatumBM),
          matcher_(mask, supplier, sql, products_, report_) {
        prices_.Init();
    }

    void fill(const EntryList& entries, SampleValues& shown) {
        for (std::size_t i = 0; i < mask_.relations.size(); ++i) read(mask_.relations[i], shown.values[i]);
        if (!mask_.hasKey) return;
        const ProductMatch found = matcher_.match(entries);
        shown.product = productOf(found.outcome);
        if (shown.product == Product::PriceListOnly) shown.number = found.productNumber;
        if (shown.product != Product::Existing && shown.product != Product::New) return;
        const bool added = shown.product == Product::New;
        if (!added) {
            shown.number = text(ordinal(kProdukt, "Nummer"));
            shown.name = text(products_->ordinal("Benämning"));
            each(
                shown, [this, &shown](const Relation& relation) { return stored(relation, shown.number); },
                &SampleValues::Value::present);
        }
        added ? products_->addNew() : products_->edit();
        write(entries, added);
        if (added) shown.number = text(ordinal(kProdukt, "Nummer"));
        each(
            shown, [&](const Relation& relation) { return written(relation, entries, shown.number); },
            &SampleValues::Value::after);
        products_->cancelUpdate();
    }

  private:
    /// As `RecordImport` saves a product, but for saving.
    void write(const EntryList& entries, bool added) {
        ColumnWriter columns(mask_, *products_, settings_, prices_, report_);
        const bool setPriceDate = columns.write(*products_, entries, added).setPriceDate;
        if (added) {
            NewProductDefaults(*syinställningar_, *syinställningar2_, sql_.locale(), report_)
                .SättNyProduktStandard(*products_);
            const int weighted = products_->ordinal("Vägtinpris");
            if (mask_.hasPurchasePrice() && TillDbl(products_->value(weighted), sql_.locale()) == 0)
                products_->set(weighted, products_->value(ordinal(kProdukt, "Inpris")));
        }
        if (setPriceDate) products_->set(products_->ordinal("Prisändrdat"), Idag_);
        if (!columns.changesPrices()) return;
        DraftRecord draft(*products_);
        ProductCoupling(mask_.hasPurchasePrice(), sql_, prices_, report_).couple(draft);
    }

    static Product productOf(ProductMatch::Outcome outcome) {
        switch (outcome) {
            case ProductMatch::Outcome::Edit:
                return Product::Existing;
            case ProductMatch::Outcome::Add:
                return Product::New;
            case ProductMatch::Outcome::PriceListOnly:
                return Product::PriceListOnly;
            default:
                return Product::NotRead;
        }
    }

    template <typename Text>
    void each(SampleValues& shown, Text text, std::string SampleValues::Value::*member) const {
        for (std::size_t i = 0; i < mask_.relations.size(); ++i) shown.values[i].*member = text(mask_.relations[i]);
    }

    [[nodiscard]] std::string text(int column) {
        const FieldDef& field = products_->fields()[static_cast<std::size_t>(column)];
        return TillText(products_->value(column), field.type, sql_.locale());
    }

    /// The place of a column that the company has; 0 for other targets.
    [[nodiscard]] int columnOfCompany(const Relation& relation) const {
        const int column = columnOf(relation.Mål);
        return column < static_cast<int>(products_->fields().size()) ? column : 0;
    }

    void read(const Relation& relation, SampleValues::Value& value) {
        const int column = columnOfCompany(relation);
        value.read = value.raw;
        if (column == 0) return;
        const FieldDef& field = products_->fields()[static_cast<std::size_t>(column)];
        std::optional<Value> result = std::string(value.raw);
        switch (field.type) {
            case FieldType::Single:
            case FieldType::Double:
                result = readNumber(value.raw, relation.Division, sql_.locale());
                break;
            case FieldType::Boolean:
                result = TolkaJaNej(value.raw);
                break;
            case FieldType::Date:
                result = TolkaDatum(value.raw, Idag_, sql_.locale());
                break;
            case FieldType::Memo:
                result = memoText(value.raw);
                break;
            case FieldType::Text:
                result = std::string(firstCharacters(value.raw, static_cast<std::size_t>(field.size)));
                break;
            default:
                break;
        }
        value.unread = !result && !value.raw.empty();
        value.read = result ? TillText(*result, field.type, sql_.locale()) : std::string();
    }

    [[nodiscard]] std::string stored(const Relation& relation, const std::string& product) {
        if (const int column = columnOfCompany(relation); column != 0) return text(column);
        const int heading = headingOf(relation.Mål);
        if (heading == 0) return {};
        const auto found = sql_.SQLÖppnaRs(
            "SELECT Nummer, Alternativnr FROM Prodaltprodnr WHERE Produktnr = " + SqlLayer::SQLText(product),
            RecordsetType::Snapshot);
        for (; !found->eof(); found->moveNext()) {
            if (TillLng(found->value(0), sql_.locale()) == heading) return TillText(found->value(1), sql_.locale());
        }
        return {};
    }

    /// Alternative numbers have rows of their own, which are written when the product is saved.
    [[nodiscard]] std::string written(const Relation& relation, const EntryList& entries, const std::string& product) {
        if (headingOf(relation.Mål) == 0) return stored(relation, product);
        const std::string before = stored(relation, product);
        const bool writes = relation.TypKod == 'U' || (relation.TypKod == 'S' && before.empty());
        return writes ? std::string(entries.text(relation.Källa)) : before;
    }

    SqlLayer& sql_;
    Date Idag_;
    const LoadedMask& mask_;
    RunReport report_;
    std::unique_ptr<Recordset> products_;
    std::unique_ptr<Recordset> syinställningar_, syinställningar2_;
    ColumnSettings settings_;
    PrisClsRoundInprisOUtpris prices_;
    ProductMatcher matcher_;
};

}  // namespace

SampleValues readSample(SqlLayer& sql, LanguageTexts& texts, Date Idag, std::string_view supplier, const Mask& mask,
                        const std::vector<Relation>& relations, const std::filesystem::path& sample,
                        std::int64_t record) {
    SampleValues shown;
    const LoadedMask loaded(mask, relations);
    if (relations.empty() || loaded.emptyRecords()) return shown;
    try {
        PriceFile file(sample);
        MaskRecordReader reader(file, loaded);
        for (std::int64_t number = 0; number <= record; ++number) {
            if (!reader.next()) return shown;
        }
        shown.values.resize(loaded.relations.size());
        for (std::size_t i = 0; i < shown.values.size(); ++i) {
            shown.values[i].raw = reader.entries().text(loaded.relations[i].Källa);
        }
        SampleProduct(sql, Idag, supplier, loaded).fill(reader.entries(), shown);
    } catch (const PlatformError& error) {
        shown.product = Product::Unknown;
        shown.whyUnknown = errorText(texts, error);
    }
    return shown;
}

}  // namespace kolmera
