#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "import/masks/alternativenumbers.h"
#include "import/masks/columnwriter.h"
#include "import/masks/documentwriter.h"
#include "import/masks/pricelistwriter.h"
#include "import/masks/productcoupling.h"
#include "import/masks/productmatcher.h"
#include "import/rows/defaults.h"
#include "import/run/importcontext.h"

namespace kolmera {

/// The tables that a mask run opens before its record loop.
struct MaskTables {
    std::unique_ptr<Recordset> products;  ///< by the index of the search key
    std::unique_ptr<Recordset> settings, settings2;
    std::unique_ptr<Recordset> alternatives;  ///< by product
    std::unique_ptr<Recordset> priceList;     ///< by product and supplier; when the mask has UppdatLev
};

/// What a mask run does with each record: finds or creates the product, writes its columns, recomputes coupled prices,
/// and brings alternative numbers, supplier price list and document in line. Counts into the run's summary.
class RecordImport {
  public:
    /// Opens what else is needed. The tables' owner keeps products and settings; the others go to their writers.
    RecordImport(const LoadedMask& mask, std::string_view jobSupplier, ImportContext& context, MaskTables& tables,
                 RunSummary& summary);

    /// Nothing that the database refuses stops a record but the error that ends the run: a refused value leaves its
    /// column, a failed search or save the record.
    /// `number` is that by which the user knows the record.
    void import(const EntryList& entries, std::int64_t number);

    /// What one record leaves to the next, beside the database and the counts.
    struct Memory {
        std::string productNumber;
        ProductCoupling::Currency currency;
        PrisClsRoundInprisOUtpris::Currency listCurrency;
    };
    [[nodiscard]] Memory memory() const { return {productNumber_, coupling_.currency(), prices_.currency()}; }
    void remember(const Memory& memory);

  private:
    [[nodiscard]] ProductMatch match(const EntryList& entries);
    [[nodiscard]] bool write(const ProductMatch& match, const EntryList& entries);
    bool importProduct(const ProductMatch& match, const EntryList& entries);
    bool importPriceListOnly(const ProductMatch& match, const EntryList& entries);
    [[nodiscard]] bool saveProduct(bool& newProduct, const EntryList& entries, std::optional<double>& discount);
    void completeNewProduct();
    void takeProductNumber();

    const LoadedMask& mask_;
    SqlLayer& sql_;
    RunSummary& summary_;
    RunReport& report_;
    PriceTrace* trace_;
    Date Idag_;
    std::unique_ptr<Recordset>& products_;
    int Vägtinpris_, Prisändrdat_, Förändringsdatum_;
    ColumnSettings settings_;
    PrisClsRoundInprisOUtpris prices_;
    ColumnWriter columns_;
    NewProductDefaults defaults_;
    ProductMatcher matcher_;
    ProductCoupling coupling_;
    std::optional<AlternativeNumbers> alternatives_;
    std::optional<PriceListWriter> priceList_;
    std::optional<DocumentWriter> documents_;
    std::string productNumber_;  ///< of the product saved last
};

}  // namespace kolmera
