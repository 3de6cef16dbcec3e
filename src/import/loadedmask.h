#pragma once

#include <array>
#include <string>
#include <vector>

#include "definitions/maskfile.h"
#include "platform/encodings.h"

namespace kolmera {

/// Target codes with a rule of their own. Codes 1 to 137 are the product table's column ordinals.
namespace target {
inline constexpr int kNummer = 1;
inline constexpr int kSöknamn = 2;
inline constexpr int kLeverantör = 3;
inline constexpr int kLevartikelnr = 4;
inline constexpr int kInpris = 21;
inline constexpr int kRabatt = 22;
inline constexpr int kFirstUtpris = 24;
inline constexpr int kLastUtpris = 32;
inline constexpr int kPrisändrdat = 49;
inline constexpr int kDokument = 123;
inline constexpr int kLastDirectColumn = 137;
inline constexpr int kFirstAlternative = 138;
inline constexpr int kLastAlternative = 200;
inline constexpr int kHeadingShift = 137;  ///< heading = code - this
inline constexpr int kColumnShift = 63;    ///< ordinal = code - this, for codes behind the headings
}  // namespace target

/// The product column that a target code means; 0 for codes that mean none.
constexpr int productColumn(int targetCode) {
    if (targetCode >= 1 && targetCode <= target::kLastDirectColumn) return targetCode;
    return targetCode > target::kLastAlternative ? targetCode - target::kColumnShift : 0;
}

constexpr bool isAlternative(int targetCode) {
    return targetCode >= target::kFirstAlternative && targetCode <= target::kLastAlternative;
}

/// Where a value stands: the number of an entry, 0 when the mask does not name any, and its relation's second letter.
struct Source {
    int entry = 0;
    char Division = 'I';
    char TypKod = 'I';

    [[nodiscard]] bool present() const { return entry != 0; }
};

/// A mask as a run uses it. Of several relations for one purpose the last one counts.
struct LoadedMask {
    enum class Layout { Lines, Tabs, Fixed };

    LoadedMask() = default;
    LoadedMask(const Mask& mask, std::vector<Relation> allRelations);

    std::string Namn;
    Layout layout = Layout::Lines;
    CodePage codePage = CodePage::Windows1252;
    bool SkapaNya = false;
    bool UppdatLev = false;
    int AntalRader = 0;  ///< lines that make a record
    int Postlängd = 0;   ///< bytes of a record
    int entries = 0;     ///< size of the entry list
    bool tooManyRelations = false;

    std::vector<Relation> relations;  ///< the first hundred
    bool hasKey = false;
    Source key;
    int keyTarget = 0;
    Source discountCode;
    Source supplier;
    Source discount;
    Source date;
    Source document;
    bool hasAlternatives = false;
    std::array<Source, 10> prices;  ///< 0 the purchase price, 1-9 the price levels

    [[nodiscard]] bool hasPurchasePrice() const { return prices[0].present(); }
    /// What a record consists of is not known: no lines, or no length.
    [[nodiscard]] bool emptyRecords() const;

  private:
    void note(const Relation& relation);
};

}  // namespace kolmera
